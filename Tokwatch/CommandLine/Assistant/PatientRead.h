#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tokwatch {

/// What arrives at a descriptor until its end, or until `isWhole` says so of what came so far, or
/// until nothing more came for `patience` altogether: whoever holds the other end may keep it open.
/// Absent beyond `limit` bytes. What cannot be read ends it.
std::optional<std::string> patientRead(int descriptor, std::size_t limit,
                                       std::chrono::milliseconds patience,
                                       const std::function<bool(std::string_view)>& isWhole);

} // namespace tokwatch
