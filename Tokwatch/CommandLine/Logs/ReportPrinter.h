#pragma once

#include "Tokwatch/CommandLine/CommandSurroundings.h"
#include "Tokwatch/Report/UsageReport.h"

#include <string>

namespace tokwatch {

/// A report for people, as wide as the terminal. `window`: "Last 30 days".
void printReport(const CommandSurroundings& surroundings, const UsageReport& report,
                 const std::string& window);

/// Where the running block of a report by blocks leads; nothing without one.
void printRunningBlock(const CommandSurroundings& surroundings, const UsageReport& report);

} // namespace tokwatch
