#pragma once

#include <chrono>
#include <string>

namespace tokwatch {

/// Whether the message bus at this address takes connections and never says a word, as a stopped
/// one does: libraries wait for its greeting without end. Of a list of addresses the first counts;
/// what is no local socket is not mute. Waits for its first word as long as `patience`.
bool isMuteBus(const std::string& addresses, std::chrono::milliseconds patience);

} // namespace tokwatch
