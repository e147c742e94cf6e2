#pragma once

class QWindow;

namespace kivo {

/// Makes a frameless window a part of the desktop: below all other windows, on all workspaces, in
/// no task bar and no pager, and never with the keyboard. Before the window is shown for the first
/// time.
///
/// On X11 it is a utility window that is kept below. One of the type "desktop", which the desktop's
/// own window has, too, vanishes behind that at the first click on the desktop (seen with openbox
/// and xfwm4). A Wayland compositor has no word for any of this but to
/// programs that speak its layer shell, for which no library of this toolkit is packaged: there it
/// is a window without a frame.
void putOnDesktop(QWindow& window);

} // namespace kivo
