#pragma once

#include "TokwatchCore/Records/RecordCoding.h"

#include <optional>
#include <string>
#include <vector>

/// Comma-separated values by RFC 4180.
namespace tokwatch {

/// The text (`plainText`), quoted where a reader would take it for several fields, and behind a "'"
/// where a spreadsheet would take it for a formula.
std::string csvField(const std::string& text);
/// A text as above, another value as JSON writes it, empty for null.
std::string csvField(const Json& value);
/// Shortest digits that read back as the same number; empty without one.
std::string csvNumber(std::optional<double> number);
/// The fields as they stand.
std::string csvLine(const std::vector<std::string>& fields);

} // namespace tokwatch
