#pragma once

#include "Tokwatch/Display/StatusTitle.h"
#include "Tokwatch/Preferences/PreferenceTypes.h"
#include "TokwatchCore/Store/UsageSummary.h"

#include <string>
#include <vector>

namespace tokwatch {

/// A summary and the limits as a few lines of plain text, to be taken elsewhere: "Today: $12.40 ·
/// 1.23M tokens · API estimate", the same of all its days, a line a limit. The last line is not
/// ended.
std::string plainSummary(const UsageSummary& summary, const std::vector<LimitStep>& limits,
                         SummaryUnit unit);

} // namespace tokwatch
