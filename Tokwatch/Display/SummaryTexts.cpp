#include "Tokwatch/Display/SummaryTexts.h"

#include "TokwatchCore/Support/Amounts.h"

namespace tokwatch {

std::string SummaryTexts::period(std::int64_t days) {
    return days == 1 ? "Today" : "Last " + counted(days, "day");
}

std::string SummaryTexts::noUsage(std::int64_t days) {
    return days == 1 ? "No usage today" : "No usage in the last " + counted(days, "day");
}

} // namespace tokwatch
