#pragma once

#include <chrono>

namespace tokwatch {

/// Sees to it that nothing in this process waits for a session or system bus that takes connections
/// and never says a word, as a stopped one does: libraries wait for its greeting without end. Such
/// a bus is one line in the log, and there is none for this process then. For programs that talk
/// with a bus, before the application object. True when one was left out.
bool leaveOutMuteBuses(std::chrono::milliseconds patience = std::chrono::seconds{5});

} // namespace tokwatch
