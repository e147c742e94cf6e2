#include "KivoLooks/ToneChoice.h"

namespace kivo {

Appearance inTone(Appearance desktop, ToneChoice choice) {
    if (choice != ToneChoice::desktop) desktop.dark = choice == ToneChoice::dark;
    return desktop;
}

} // namespace kivo
