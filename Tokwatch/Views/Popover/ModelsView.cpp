#include "ModelsView.h"

namespace tokwatch {

ModelsView::ModelsView(AppModel&, const ViewClock&) {}

} // namespace tokwatch
