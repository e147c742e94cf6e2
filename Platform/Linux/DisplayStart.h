#pragma once

namespace tokwatch {

/// Around the making of the application object, which connects with the display: where there is
/// none that answers, the toolkit advises to install it anew and ends the process by a signal, as
/// if it had crashed. Here that is one line on standard error, "PROGRAM: no display could be used:
/// could not connect to display :7", and exit status 1. One at a time.
class DisplayStart {
  public:
    /// The program's name, which outlives it.
    explicit DisplayStart(const char* program);
    ~DisplayStart();
    DisplayStart(const DisplayStart&) = delete;
    DisplayStart& operator=(const DisplayStart&) = delete;
};

} // namespace tokwatch
