#include "KivoPaste/PasteKey.h"

#include "KivoPanel/XServer.h"

#include <QGuiApplication>
#include <QWindow>

#include <algorithm>
#include <optional>
#include <xcb/xtest.h>

namespace kivo {
namespace {

constexpr xcb_keysym_t insertKey = 0xff63;
constexpr xcb_keysym_t leftShift = 0xffe1;
constexpr xcb_window_t pointerRoot = 1; ///< the keyboard follows the pointer: nobody's

xcb_window_t rootOf(xcb_connection_t* connection) {
    return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

bool isOurs(xcb_window_t window) {
    return std::ranges::any_of(QGuiApplication::topLevelWindows(), [window](const QWindow* each) {
        return each->handle() != nullptr && each->winId() == window;
    });
}

/// Which window its manager calls active, and did last where it names none any more.
xcb_window_t activeWindow(xcb_connection_t* connection, xcb_window_t root) {
    const xcb_atom_t name = atomOf(connection, "_NET_ACTIVE_WINDOW", true);
    if (name == XCB_ATOM_NONE) return XCB_WINDOW_NONE;
    const auto property = owned(xcb_get_property_reply(
        connection, xcb_get_property(connection, false, root, name, XCB_ATOM_WINDOW, 0, 1),
        nullptr));
    if (!property || xcb_get_property_value_length(property.get()) < int{sizeof(xcb_window_t)})
        return XCB_WINDOW_NONE;
    return *static_cast<const xcb_window_t*>(xcb_get_property_value(property.get()));
}

/// Where no window is active, the keyboard is with one of the manager's own, to which nobody
/// pastes.
bool areOfOneProgram(xcb_connection_t* connection, xcb_window_t one, xcb_window_t other) {
    const uint32_t program = ~xcb_get_setup(connection)->resource_id_mask;
    return (one & program) == (other & program);
}

/// Where each keyboard has a key; none where it has not.
std::optional<xcb_keycode_t> keyCode(xcb_connection_t* connection, xcb_keysym_t wanted) {
    const xcb_setup_t* setup = xcb_get_setup(connection);
    const auto count = static_cast<uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const auto mapping = owned(xcb_get_keyboard_mapping_reply(
        connection, xcb_get_keyboard_mapping(connection, setup->min_keycode, count), nullptr));
    if (!mapping || mapping->keysyms_per_keycode == 0) return std::nullopt;
    const xcb_keysym_t* first = xcb_get_keyboard_mapping_keysyms(mapping.get());
    const xcb_keysym_t* end = first + xcb_get_keyboard_mapping_keysyms_length(mapping.get());
    const xcb_keysym_t* found = std::find(first, end, wanted);
    if (found == end) return std::nullopt;
    return static_cast<xcb_keycode_t>(setup->min_keycode +
                                      (found - first) / mapping->keysyms_per_keycode);
}

} // namespace

bool isAnotherProgramReady() {
    xcb_connection_t* connection = xServer();
    if (connection == nullptr || QGuiApplication::focusWindow() != nullptr) return false;
    const xcb_window_t root = rootOf(connection);
    const auto asked = xcb_get_input_focus(connection);
    const auto pointerAsked = xcb_query_pointer(connection, root);
    const auto focus = owned(xcb_get_input_focus_reply(connection, asked, nullptr));
    const auto pointer = owned(xcb_query_pointer_reply(connection, pointerAsked, nullptr));
    if (!focus || !pointer) return false;
    constexpr int modifiers =
        XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_4;
    const xcb_window_t active = activeWindow(connection, root);
    return active != XCB_WINDOW_NONE && areOfOneProgram(connection, active, focus->focus) &&
           focus->focus > pointerRoot && focus->focus != root && !isOurs(focus->focus) &&
           (pointer->mask & modifiers) == 0;
}

bool pressPasteKey() {
    xcb_connection_t* connection = xServer();
    if (connection == nullptr) return false;
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(connection, &xcb_test_id);
    if (extension == nullptr || extension->present == 0) return false;
    const std::optional<xcb_keycode_t> shift = keyCode(connection, leftShift);
    const std::optional<xcb_keycode_t> insert = keyCode(connection, insertKey);
    if (!shift || !insert) return false;
    const auto fake = [connection](uint8_t what, xcb_keycode_t key) {
        xcb_test_fake_input(connection, what, key, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    };
    fake(XCB_KEY_PRESS, *shift);
    fake(XCB_KEY_PRESS, *insert);
    fake(XCB_KEY_RELEASE, *insert);
    fake(XCB_KEY_RELEASE, *shift);
    xcb_flush(connection);
    return true;
}

} // namespace kivo
