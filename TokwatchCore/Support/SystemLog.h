#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace tokwatch {

/// Writes "Tokwatch: " + message as one line to the system log: standard error, which a user
/// service hands to the journal. Callable from any thread. Never give it a secret.
void systemLog(std::string_view message);

/// Redirects the log for as long as it lives; one at a time, for tests.
class SystemLogCapture {
  public:
    using Sink = std::function<void(const std::string& line)>;
    explicit SystemLogCapture(Sink sink);
    ~SystemLogCapture();
    SystemLogCapture(const SystemLogCapture&) = delete;
    SystemLogCapture& operator=(const SystemLogCapture&) = delete;
};

/// Stops the program with one line on standard error and exit status 1. For broken invariants that
/// must not be papered over (a sum beyond 64 bits, a missing resource bundle); nothing is unwound,
/// and the database is left as after a power cut, which it survives.
[[noreturn]] void fatal(std::string_view message);

} // namespace tokwatch
