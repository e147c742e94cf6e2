#pragma once

#include "Tokwatch/CommandLine/CommandEnvironment.h"
#include "Tokwatch/Report/UsageReport.h"

#include <string>

namespace tokwatch {

/// A report for people, as wide as the terminal. `window`: "Last 30 days".
void printReport(const CommandEnvironment& environment, const UsageReport& report,
                 const std::string& window);

/// Where the running block of a report by blocks leads; nothing without one.
void printRunningBlock(const CommandEnvironment& environment, const UsageReport& report);

} // namespace tokwatch
