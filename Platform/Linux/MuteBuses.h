#pragma once

#include <chrono>

namespace tokwatch {

/// Sees to it that nothing in this process waits for a session bus that takes connections and never
/// says a word, as a stopped one does: libraries wait for its greeting without end. Such a bus is
/// one line in the log, and there is none for this process then. For programs with windows, before
/// the application object. True when the bus was left out.
bool leaveOutMuteSessionBus(std::chrono::milliseconds patience = std::chrono::seconds{5});

} // namespace tokwatch
