#include "KivoHotKeys/HotKey.h"

#include <QKeySequence>

#include <algorithm>
#include <array>

namespace kivo {
namespace {

struct ModifierName {
    Qt::KeyboardModifier modifier;
    QLatin1String shown;
    QLatin1String portal;
};

constexpr std::array modifierNames{
    ModifierName{Qt::ControlModifier, QLatin1String("Ctrl"), QLatin1String("CTRL")},
    ModifierName{Qt::AltModifier, QLatin1String("Alt"), QLatin1String("ALT")},
    ModifierName{Qt::ShiftModifier, QLatin1String("Shift"), QLatin1String("SHIFT")},
    ModifierName{Qt::MetaModifier, QLatin1String("Super"), QLatin1String("LOGO")},
};

/// The number of a key in X's keysymdef.h, and its name there.
struct Keysym {
    Qt::Key key;
    std::uint32_t number;
    const char* name;
};

constexpr std::array keysyms{
    Keysym{Qt::Key_Space, 0x20, "space"},
    Keysym{Qt::Key_Exclam, 0x21, "exclam"},
    Keysym{Qt::Key_QuoteDbl, 0x22, "quotedbl"},
    Keysym{Qt::Key_NumberSign, 0x23, "numbersign"},
    Keysym{Qt::Key_Dollar, 0x24, "dollar"},
    Keysym{Qt::Key_Percent, 0x25, "percent"},
    Keysym{Qt::Key_Ampersand, 0x26, "ampersand"},
    Keysym{Qt::Key_Apostrophe, 0x27, "apostrophe"},
    Keysym{Qt::Key_ParenLeft, 0x28, "parenleft"},
    Keysym{Qt::Key_ParenRight, 0x29, "parenright"},
    Keysym{Qt::Key_Asterisk, 0x2a, "asterisk"},
    Keysym{Qt::Key_Plus, 0x2b, "plus"},
    Keysym{Qt::Key_Comma, 0x2c, "comma"},
    Keysym{Qt::Key_Minus, 0x2d, "minus"},
    Keysym{Qt::Key_Period, 0x2e, "period"},
    Keysym{Qt::Key_Slash, 0x2f, "slash"},
    Keysym{Qt::Key_Colon, 0x3a, "colon"},
    Keysym{Qt::Key_Semicolon, 0x3b, "semicolon"},
    Keysym{Qt::Key_Less, 0x3c, "less"},
    Keysym{Qt::Key_Equal, 0x3d, "equal"},
    Keysym{Qt::Key_Greater, 0x3e, "greater"},
    Keysym{Qt::Key_Question, 0x3f, "question"},
    Keysym{Qt::Key_At, 0x40, "at"},
    Keysym{Qt::Key_BracketLeft, 0x5b, "bracketleft"},
    Keysym{Qt::Key_Backslash, 0x5c, "backslash"},
    Keysym{Qt::Key_BracketRight, 0x5d, "bracketright"},
    Keysym{Qt::Key_AsciiCircum, 0x5e, "asciicircum"},
    Keysym{Qt::Key_Underscore, 0x5f, "underscore"},
    Keysym{Qt::Key_QuoteLeft, 0x60, "grave"},
    Keysym{Qt::Key_BraceLeft, 0x7b, "braceleft"},
    Keysym{Qt::Key_Bar, 0x7c, "bar"},
    Keysym{Qt::Key_BraceRight, 0x7d, "braceright"},
    Keysym{Qt::Key_AsciiTilde, 0x7e, "asciitilde"},
    Keysym{Qt::Key_Backspace, 0xff08, "BackSpace"},
    Keysym{Qt::Key_Return, 0xff0d, "Return"},
    Keysym{Qt::Key_Pause, 0xff13, "Pause"},
    Keysym{Qt::Key_Escape, 0xff1b, "Escape"},
    Keysym{Qt::Key_Home, 0xff50, "Home"},
    Keysym{Qt::Key_Left, 0xff51, "Left"},
    Keysym{Qt::Key_Up, 0xff52, "Up"},
    Keysym{Qt::Key_Right, 0xff53, "Right"},
    Keysym{Qt::Key_Down, 0xff54, "Down"},
    Keysym{Qt::Key_PageUp, 0xff55, "Prior"},
    Keysym{Qt::Key_PageDown, 0xff56, "Next"},
    Keysym{Qt::Key_End, 0xff57, "End"},
    Keysym{Qt::Key_Print, 0xff61, "Print"},
    Keysym{Qt::Key_Insert, 0xff63, "Insert"},
    Keysym{Qt::Key_Menu, 0xff67, "Menu"},
    Keysym{Qt::Key_Delete, 0xffff, "Delete"},
};

constexpr std::uint32_t firstFunctionKeysym = 0xffbe;

bool isBetween(Qt::Key key, Qt::Key first, Qt::Key last) {
    return first <= key && key <= last;
}

bool isFunctionKey(Qt::Key key) {
    return isBetween(key, Qt::Key_F1, Qt::Key_F35);
}

/// Letters and digits are their own numbers, here as there.
bool isAlphanumeric(Qt::Key key) {
    return isBetween(key, Qt::Key_A, Qt::Key_Z) || isBetween(key, Qt::Key_0, Qt::Key_9);
}

const Keysym* tableEntry(Qt::Key key) {
    const auto found = std::ranges::find(keysyms, key, &Keysym::key);
    return found == keysyms.end() ? nullptr : found;
}

QString keysymName(Qt::Key key) {
    if (const Keysym* entry = tableEntry(key)) return QLatin1String(entry->name);
    if (isFunctionKey(key)) return u'F' + QString::number(key - Qt::Key_F1 + 1);
    return QString(QChar(static_cast<char16_t>(key))).toLower();
}

} // namespace

std::optional<std::uint32_t> keysymOf(Qt::Key key) {
    if (const Keysym* entry = tableEntry(key)) return entry->number;
    if (isFunctionKey(key)) return firstFunctionKeysym + (key - Qt::Key_F1);
    if (!isAlphanumeric(key)) return std::nullopt;
    constexpr std::uint32_t lowerCase = 'a' - 'A';
    const auto number = static_cast<std::uint32_t>(key);
    return key >= Qt::Key_A ? number + lowerCase : number;
}

bool isUsable(const HotKey& hotKey) {
    constexpr Qt::KeyboardModifiers all =
        Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier | Qt::ShiftModifier;
    // The number pad's keys have numbers of their own.
    if (!keysymOf(hotKey.key) || (hotKey.modifiers & ~all)) return false;
    return (hotKey.modifiers & ~Qt::KeyboardModifiers(Qt::ShiftModifier)) ||
           isFunctionKey(hotKey.key) || hotKey.key == Qt::Key_Pause;
}

QString textOf(Qt::KeyboardModifiers modifiers) {
    QString text;
    for (const ModifierName& name : modifierNames)
        if (modifiers.testFlag(name.modifier)) (text += name.shown) += u'+';
    return text;
}

QString textOf(const HotKey& hotKey) {
    return textOf(hotKey.modifiers) + QKeySequence(hotKey.key).toString(QKeySequence::PortableText);
}

std::optional<HotKey> hotKeyFrom(QStringView text) {
    HotKey hotKey;
    const auto takeModifier = [&](const ModifierName& name) {
        if (!text.startsWith(name.shown, Qt::CaseInsensitive) ||
            text.mid(name.shown.size(), 1) != u"+")
            return false;
        hotKey.modifiers |= name.modifier;
        text = text.mid(name.shown.size() + 1);
        return true;
    };
    while (std::ranges::any_of(modifierNames, takeModifier)) {
    }
    const QKeySequence keys(text.toString(), QKeySequence::PortableText);
    if (keys.count() != 1 || keys[0].keyboardModifiers() != Qt::NoModifier) return std::nullopt;
    hotKey.key = keys[0].key();
    return isUsable(hotKey) ? std::optional(hotKey) : std::nullopt;
}

QString portalTrigger(const HotKey& hotKey) {
    QString trigger;
    for (const ModifierName& name : modifierNames)
        if (hotKey.modifiers.testFlag(name.modifier)) (trigger += name.portal) += u'+';
    return trigger + keysymName(hotKey.key);
}

} // namespace kivo
