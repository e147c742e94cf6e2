#include "Tokwatch/Views/Settings/HotKeyView.h"

#include "Tokwatch/DesktopPreferences/ChosenHotKey.h"
#include "Tokwatch/DesktopPreferences/DesktopPreferences.h"

#include <utility>

namespace tokwatch {
namespace {

using kivo::HotKeyState;

QString captionOf(const ChosenHotKey::Status& status, const QString& keys, const QString& command) {
    const QString otherwise =
        QStringLiteral("Bind a key to the command %1 in the desktop's own settings instead.")
            .arg(command);
    switch (status.state) {
    case HotKeyState::none:
        break;
    case HotKeyState::waiting:
        return QStringLiteral("Waiting for the desktop, which may ask you.");
    case HotKeyState::bound:
        if (status.trigger.isEmpty() || status.trigger == keys) break;
        return QStringLiteral("On this desktop: %1").arg(status.trigger);
    case HotKeyState::taken:
        return QStringLiteral("Another program has %1.").arg(status.keys) +
               (keys.isEmpty() || keys == status.keys ? QString()
                                                      : QStringLiteral(" %1 stays.").arg(keys));
    case HotKeyState::missing:
        return QStringLiteral("This keyboard has no %1.").arg(status.keys);
    case HotKeyState::refused:
        return QStringLiteral("The desktop refused %1. ").arg(status.keys) + otherwise;
    case HotKeyState::silent:
        return QStringLiteral("The desktop does not answer. ") + otherwise;
    case HotKeyState::unsupported:
        return QStringLiteral("This desktop lends programs no hot keys. ") + otherwise;
    }
    return QStringLiteral("Opens and closes Tokwatch from anywhere.");
}

bool isProblem(HotKeyState state) {
    return state == HotKeyState::taken || state == HotKeyState::missing ||
           state == HotKeyState::refused;
}

} // namespace

HotKeyView::HotKeyView(DesktopPreferences& desktopPreferences, ChosenHotKey& chosen,
                       QString openingCommand)
    : preferences(desktopPreferences), hotKey(chosen), command(std::move(openingCommand)),
      updater([this] { return computed(); },
              [this](HotKeySetting next) { current = std::move(next); }) {
    hotKey.look();
    updater.arm();
}

HotKeySetting HotKeyView::computed() const {
    const ChosenHotKey::Status status = hotKey.status();
    HotKeySetting setting;
    setting.keys = QString::fromStdString(textOf(preferences.hotKey.value()));
    setting.canRecord =
        status.state != HotKeyState::silent && status.state != HotKeyState::unsupported;
    setting.isProblem = wasRefused || isProblem(status.state);
    setting.caption =
        wasRefused ? QStringLiteral(
                         "Hold Ctrl, Alt or Super with a letter or digit, or take a function key.")
                   : captionOf(status, setting.keys, command);
    return setting;
}

void HotKeyView::choose(const QString& keys) {
    if (const auto key = kivo::hotKeyFrom(keys)) hotKey.choose(*key);
}

void HotKeyView::clear() {
    hotKey.clear();
}

void HotKeyView::refuse() {
    wasRefused = true;
}

void HotKeyView::setRecording(bool records) {
    wasRefused = false;
    hotKey.setRecording(records);
}

} // namespace tokwatch

#include "moc_HotKeyView.cpp"
