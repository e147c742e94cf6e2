#pragma once

#include "Tokwatch/Report/UsageReport.h"
#include "TokwatchCore/Records/RecordCoding.h"

#include <string>

namespace tokwatch {

/// A report for programs.
Json reportJson(const UsageReport& report);

/// The rows for spreadsheets, by RFC 4180: a line of names, lines that end with CR LF, times as in
/// JSON, empty fields for what is not known.
std::string reportCSV(const UsageReport& report);

} // namespace tokwatch
