#pragma once

#include "TokwatchCore/Records/LimitRecords.h"

#include <string>

namespace tokwatch {

/// The window's label as shown, without control characters. Plans with a weekly limit alone report
/// it in the session's place; then the label tells how long that session is: "Session · 7 days".
std::string windowLabel(const LimitWindow& window);

} // namespace tokwatch
