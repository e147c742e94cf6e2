#include "KivoDesktop/LayerSurface.h"

namespace kivo {

std::unique_ptr<LayerSurface> LayerSurface::of(QWindow&) {
    return nullptr;
}

} // namespace kivo
