#include "Tokwatch/Display/SummaryTexts.h"

namespace tokwatch {

std::string SummaryTexts::noUsage(std::int64_t days) {
    return "No usage in the last " + std::to_string(days) + (days == 1 ? " day" : " days");
}

} // namespace tokwatch
