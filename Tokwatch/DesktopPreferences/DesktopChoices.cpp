#include "Tokwatch/DesktopPreferences/DesktopChoices.h"

namespace tokwatch {
namespace {

QString asQString(std::string_view utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

} // namespace

void loadSetting(const QSettings& settings, const char* key, HotKeyChoice& value) {
    if (const auto stored = storedText(settings, key))
        if (HotKeyChoice parsed; parseText(*stored, parsed)) value = parsed;
}

void storeSetting(QSettings& settings, const char* key, const HotKeyChoice& value) {
    storeText(settings, key, textOf(value));
}

std::string textOf(const HotKeyChoice& value) {
    return value.key ? kivo::textOf(*value.key).toStdString() : std::string();
}

bool parseText(std::string_view text, HotKeyChoice& value) {
    const std::string_view keys = trimmed(text);
    value.key = kivo::hotKeyFrom(asQString(keys));
    return value.key || keys.empty();
}

SettingDomain domainOf(const HotKeyChoice&) {
    return {"keys such as Ctrl+Alt+T", {}};
}

void loadSetting(const QSettings& settings, const char* key, PanelFrames& value) {
    if (const auto stored = storedText(settings, key)) parseText(*stored, value);
}

void storeSetting(QSettings& settings, const char* key, const PanelFrames& value) {
    storeText(settings, key, textOf(value));
}

std::string textOf(const PanelFrames& value) {
    return kivo::textOf(value.frames).toStdString();
}

bool parseText(std::string_view text, PanelFrames& value) {
    value.frames = kivo::savedFramesFrom(asQString(text));
    return textOf(value) == text;
}

SettingDomain domainOf(const PanelFrames&) {
    return {"lines such as 20 40 232 140 HDMI-1", {}};
}

} // namespace tokwatch
