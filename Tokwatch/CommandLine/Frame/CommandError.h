#pragma once

#include <stdexcept>
#include <string>

namespace tokwatch {

/// How a process of ours ends.
enum ExitStatus { exitOk = 0, exitFailure = 1, exitUsage = 2 };

/// What keeps a command from doing its work; `what()` is the one line that the user gets.
class CommandError : public std::runtime_error {
  public:
    explicit CommandError(const std::string& message) : std::runtime_error(message) {}
};

/// A command line that asks for what cannot be, or for two things at once.
class UsageError : public std::runtime_error {
  public:
    explicit UsageError(const std::string& message) : std::runtime_error(message) {}
};

} // namespace tokwatch
