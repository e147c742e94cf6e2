#pragma once

#include <QString>
#include <QStringView>
#include <Qt>

#include <cstdint>
#include <optional>

namespace kivo {

/// A key with the modifiers that are held.
struct HotKey {
    Qt::KeyboardModifiers modifiers;
    Qt::Key key = Qt::Key_unknown;
    friend bool operator==(const HotKey&, const HotKey&) = default;
};

/// Whether it can be had of a whole desktop: a key that display servers have a name for, with Ctrl,
/// Alt or Super, or one that nobody types with (F1, Pause).
bool isUsable(const HotKey& hotKey);

/// "Ctrl+Alt+Shift+Super+T", as it is shown and kept.
QString textOf(const HotKey& hotKey);
/// "Ctrl+Alt+", what is held so far.
QString textOf(Qt::KeyboardModifiers modifiers);
/// None for what is no usable hot key. Names of keys are those of QKeySequence.
std::optional<HotKey> hotKeyFrom(QStringView text);

/// The key as X servers number it (the unshifted symbol of a letter); none for what is not usable.
std::optional<std::uint32_t> keysymOf(Qt::Key key);
/// As the desktop portal takes it: "CTRL+ALT+t", by freedesktop.org's rules for shortcuts.
QString portalTrigger(const HotKey& hotKey);

} // namespace kivo
