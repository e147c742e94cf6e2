#pragma once

#include <stdexcept>
#include <string>

namespace tokwatch {

/// A failure of the database: SQLite's result code and its message at that moment.
class UsageStoreError : public std::runtime_error {
  public:
    UsageStoreError(int resultCode, const std::string& text)
        : std::runtime_error(text + " (" + std::to_string(resultCode) + ")"), code(resultCode),
          message(text) {}

    int code;
    std::string message;

    /// Another process held the database's lock for longer than the store waits.
    bool isLocked() const { return (code & 0xff) == 5; }

    friend bool operator==(const UsageStoreError& a, const UsageStoreError& b) {
        return a.code == b.code && a.message == b.message;
    }
};

} // namespace tokwatch
