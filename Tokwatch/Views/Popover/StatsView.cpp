#include "StatsView.h"

namespace tokwatch {

StatsView::StatsView(AppModel&, const ViewClock&) {}

} // namespace tokwatch
