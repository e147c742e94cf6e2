#pragma once

#include "KivoLooks/Palette.h"

namespace kivo {

/// Whether windows are light or dark as the desktop is, or always the one.
enum class ToneChoice { desktop, light, dark };

/// What the desktop asks for, in the chosen tone.
Appearance inTone(Appearance desktop, ToneChoice choice);

} // namespace kivo
