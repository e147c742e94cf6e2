#include "KivoHotKeys/X11HotKey.h"

#include "KivoPanel/XServer.h"

#include <QByteArray>
#include <QGuiApplication>

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>

#include <xcb/xcb_keysyms.h>

namespace kivo {
namespace {

/// A map comes in several events.
constexpr std::chrono::milliseconds mapTime{50};
/// A key that repeats is released and pressed in one moment, in the server's milliseconds.
constexpr std::uint32_t repeatTime = 10;
/// The modifiers, without the pointer's buttons and the keyboard's group.
constexpr unsigned modifierBits = 0xff;

using Symbols = std::unique_ptr<xcb_key_symbols_t, decltype(&xcb_key_symbols_free)>;

/// Which bit of the modifiers is what; keyboards may have it otherwise than usual.
struct ModifierBits {
    unsigned alt = XCB_MOD_MASK_1;
    unsigned super = XCB_MOD_MASK_4;
    unsigned numLock = XCB_MOD_MASK_2;
};

ModifierBits modifierBitsOf(xcb_connection_t* server, xcb_key_symbols_t* symbols) {
    constexpr xcb_keysym_t numLock = 0xff7f;
    constexpr xcb_keysym_t altLeft = 0xffe9;
    constexpr xcb_keysym_t superLeft = 0xffeb;
    constexpr int modifiers = 8;
    ModifierBits bits;
    const auto mapping =
        owned(xcb_get_modifier_mapping_reply(server, xcb_get_modifier_mapping(server), nullptr));
    if (!mapping) return bits;
    const xcb_keycode_t* keycodes = xcb_get_modifier_mapping_keycodes(mapping.get());
    const int each = mapping->keycodes_per_modifier;
    for (int at = 0; at < modifiers * each; ++at) {
        const unsigned bit = 1U << (at / each);
        switch (xcb_key_symbols_get_keysym(symbols, keycodes[at], 0)) {
        case numLock:
            bits.numLock = bit;
            break;
        case altLeft:
            bits.alt = bit;
            break;
        case superLeft:
            bits.super = bit;
            break;
        default:
            break;
        }
    }
    return bits;
}

unsigned bitsOf(Qt::KeyboardModifiers modifiers, const ModifierBits& bits) {
    unsigned sum = 0;
    if (modifiers.testFlag(Qt::ShiftModifier)) sum |= XCB_MOD_MASK_SHIFT;
    if (modifiers.testFlag(Qt::ControlModifier)) sum |= XCB_MOD_MASK_CONTROL;
    if (modifiers.testFlag(Qt::AltModifier)) sum |= bits.alt;
    if (modifiers.testFlag(Qt::MetaModifier)) sum |= bits.super;
    return sum;
}

/// Events of the keyboard extension have one number, and their kind in the byte after it.
std::uint8_t keyboardEventOf(xcb_connection_t* server) {
    constexpr QByteArrayView name("XKEYBOARD");
    const auto extension = owned(xcb_query_extension_reply(
        server, xcb_query_extension(server, static_cast<uint16_t>(name.size()), name.data()),
        nullptr));
    return extension && extension->present != 0 ? extension->first_event : 0;
}

} // namespace

X11HotKey::X11HotKey()
    : server(xServer()), root(xcb_setup_roots_iterator(xcb_get_setup(server)).data->root),
      keyboardEvent(keyboardEventOf(server)) {
    mapTimer.setSingleShot(true);
    mapTimer.setInterval(mapTime);
    connect(&mapTimer, &QTimer::timeout, this, &X11HotKey::keyboardMapChanged);
    qGuiApp->installNativeEventFilter(this);
}

X11HotKey::~X11HotKey() {
    take({});
}

X11HotKey::Grabs X11HotKey::grabsFor(const HotKey& wanted) const {
    Grabs grabs;
    const Symbols symbols(xcb_key_symbols_alloc(server), &xcb_key_symbols_free);
    const std::optional<std::uint32_t> keysym = keysymOf(wanted.key);
    if (!symbols || !keysym) return grabs;
    const auto keycodes = owned(xcb_key_symbols_get_keycode(symbols.get(), *keysym));
    if (!keycodes) return grabs;
    const ModifierBits bits = modifierBitsOf(server, symbols.get());
    const unsigned modifiers = bitsOf(wanted.modifiers, bits);
    for (const xcb_keycode_t* each = keycodes.get(); *each != XCB_NO_SYMBOL; ++each)
        for (const unsigned locks :
             {0U, unsigned{XCB_MOD_MASK_LOCK}, bits.numLock, XCB_MOD_MASK_LOCK | bits.numLock})
            grabs.insert({*each, static_cast<std::uint16_t>(modifiers | locks)});
    return grabs;
}

/// Whether all of these grabs could be had, in place of those that are held; those stay otherwise.
bool X11HotKey::take(const Grabs& wanted) {
    const auto letGo = [this](const Grab& grab) {
        xcb_ungrab_key(server, grab.keycode, root, grab.modifiers);
    };
    Grabs fresh;
    for (const Grab& grab : wanted) {
        if (held.contains(grab)) continue;
        constexpr uint8_t toOurWindows = 0;
        const auto error = owned(xcb_request_check(
            server, xcb_grab_key_checked(server, toOurWindows, root, grab.modifiers, grab.keycode,
                                         XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)));
        if (error) {
            std::ranges::for_each(fresh, letGo);
            xcb_flush(server);
            return false;
        }
        fresh.insert(grab);
    }
    for (const Grab& grab : held)
        if (!wanted.contains(grab)) letGo(grab);
    xcb_flush(server);
    held = wanted;
    return true;
}

void X11HotKey::bind(const HotKey& wanted) {
    const Grabs grabs = grabsFor(wanted);
    if (grabs.empty()) return emit settled(HotKeyState::missing);
    if (!take(grabs)) return emit settled(HotKeyState::taken);
    key = wanted;
    emit settled(HotKeyState::bound);
}

void X11HotKey::release() {
    key.reset();
    take({});
}

void X11HotKey::setPaused(bool isPaused) {
    paused = isPaused;
    const bool isDone = take(key && !paused ? grabsFor(*key) : Grabs());
    if (!isDone) emit settled(HotKeyState::taken);
}

void X11HotKey::keyboardMapChanged() {
    if (!key || paused) return;
    const Grabs grabs = grabsFor(*key);
    if (grabs == held) return;
    const bool isThere = !grabs.empty();
    if (isThere && take(grabs)) return emit settled(HotKeyState::bound);
    take({}); // the keys that had the symbol are others' now
    emit settled(isThere ? HotKeyState::taken : HotKeyState::missing);
}

bool X11HotKey::nativeEventFilter(const QByteArray& eventType, void* message, qintptr* /*result*/) {
    if (eventType != "xcb_generic_event_t") return false;
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    constexpr unsigned sentByOthers = 0x80;
    const unsigned kind = event->response_type & ~sentByOthers;
    if (kind == XCB_KEY_PRESS)
        return keyPressed(*static_cast<const xcb_key_press_event_t*>(message));
    if (kind == XCB_KEY_RELEASE)
        return keyReleased(*static_cast<const xcb_key_release_event_t*>(message));
    constexpr unsigned newKeyboardOrMap = 1; // 0 and 1
    if (kind == XCB_MAPPING_NOTIFY || (kind == keyboardEvent && event->pad0 <= newKeyboardOrMap))
        mapTimer.start();
    return false;
}

bool X11HotKey::keyPressed(const xcb_key_press_event_t& event) {
    const auto modifiers = static_cast<std::uint16_t>(event.state & modifierBits);
    if (!held.contains({event.detail, modifiers})) {
        // Down a second time: the release of the first went to another program's window.
        if (keyDown == event.detail) {
            keyDown.reset();
            countsIn.reset();
        }
        return false;
    }
    keyDown = event.detail;
    if (event.time - releasedAt < repeatTime) return true;
    countsIn.reset();
    // A window of ours that has grabbed the keyboard gets all keys. It may close at this one, and
    // would not hear of its release, then; so it is told at the release.
    if (event.event != root)
        countsIn = event.event;
    else
        emit pressed({});
    return true;
}

bool X11HotKey::keyReleased(const xcb_key_press_event_t& event) {
    if (keyDown != event.detail) return false;
    keyDown.reset();
    releasedAt = event.time;
    if (std::exchange(countsIn, std::nullopt) == event.event) emit pressed({});
    return true;
}

} // namespace kivo
