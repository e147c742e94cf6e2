#pragma once

namespace kivo {

/// Whether a window of another program has the keyboard of the X server, and no modifier key is
/// held that would make another key of ours. Never elsewhere than on X11.
bool isAnotherProgramReady();

/// Presses Shift+Insert, which pastes wherever Ctrl+V does and does nothing else. False where the
/// server or its keyboard has no such key to press.
bool pressPasteKey();

} // namespace kivo
