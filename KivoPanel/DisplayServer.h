#pragma once

namespace kivo {

/// Whether translucent parts of windows show what lies below them: always on Wayland, on X11 while
/// a compositing manager runs. Elsewhere they would be black. Asks the X server, which answers
/// within a millisecond.
bool isComposited();

/// Whether a grab gets every press and key: on an X server that has the screen to itself. One that
/// is a Wayland compositor's guest sees nothing of what happens beside its own windows.
bool canGrabAll();

} // namespace kivo
