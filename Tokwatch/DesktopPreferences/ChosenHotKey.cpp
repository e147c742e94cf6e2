#include "Tokwatch/DesktopPreferences/ChosenHotKey.h"

#include "Tokwatch/DesktopPreferences/DesktopPreferences.h"

#include <utility>

namespace tokwatch {

using kivo::HotKeyState;

ChosenHotKey::ChosenHotKey(DesktopPreferences& desktopPreferences, MakeHotKey makeHotKey)
    : preferences(desktopPreferences), make(std::move(makeHotKey)),
      changed(preferences.hotKey.addNotifier([this] { follow(); })) {
    follow();
}

kivo::GlobalHotKey& ChosenHotKey::global() {
    if (!hotKey) {
        hotKey = make();
        connect(hotKey.get(), &kivo::GlobalHotKey::settled, this, &ChosenHotKey::settled);
        connect(hotKey.get(), &kivo::GlobalHotKey::arrived, this, &ChosenHotKey::tryAgain);
        // Later, since what is told may be told from inside the window system's event.
        connect(
            hotKey.get(), &kivo::GlobalHotKey::pressed, this,
            [this](const QString& token) {
                if (onPressed) onPressed(token);
            },
            Qt::QueuedConnection);
    }
    return *hotKey;
}

void ChosenHotKey::follow() {
    const std::optional<kivo::HotKey> wanted = preferences.hotKey.value().key;
    if (wanted == bound) return;
    attempt.reset();
    bound.reset();
    if (hotKey) hotKey->release();
    current = Status{};
    if (wanted) bind(*wanted);
}

void ChosenHotKey::bind(const kivo::HotKey& key) {
    attempt = key;
    global().bind(key);
}

ChosenHotKey::Status ChosenHotKey::standing() {
    return bound ? Status{HotKeyState::bound, kivo::textOf(*bound), global().trigger()} : Status{};
}

/// Asks nothing unless a hot key is wanted.
void ChosenHotKey::tryAgain() {
    if (attempt) return;
    current = standing();
    follow();
}

void ChosenHotKey::look() {
    tryAgain();
    if (!attempt && bound == preferences.hotKey.value().key) global().look();
}

void ChosenHotKey::choose(const kivo::HotKey& key) {
    if (key != bound) return bind(key);
    attempt.reset();
    look();
}

void ChosenHotKey::clear() {
    attempt.reset();
    preferences.hotKey = HotKeyChoice{};
    current = Status{};
}

void ChosenHotKey::setRecording(bool records) {
    // What was said of a key that could not be had is over with the next one.
    if (records && !attempt && bound == preferences.hotKey.value().key) current = standing();
    if (hotKey) hotKey->setPaused(records);
}

void ChosenHotKey::settled(HotKeyState state) {
    const std::optional<kivo::HotKey> asked = attempt ? attempt
                                              : bound ? bound
                                                      : preferences.hotKey.value().key;
    const bool isBound = state == HotKeyState::bound;
    const bool isLost = !attempt && !isBound && state != HotKeyState::waiting;
    if (isLost) bound.reset();
    if (state != HotKeyState::waiting) attempt.reset();
    current = Status{state, asked ? kivo::textOf(*asked) : QString(),
                     isBound ? global().trigger() : QString()};
    if (!isBound) return;
    bound = asked;
    preferences.hotKey = HotKeyChoice{bound};
}

} // namespace tokwatch
