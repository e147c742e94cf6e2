#pragma once

#include <stdexcept>
#include <string>
#include <system_error>

namespace tokwatch {

/// A failure of the database: SQLite's result code and its message at that moment. `what()` adds
/// the system's own reason where there is one ("No space left on device"), since "disk I/O error"
/// helps nobody.
class UsageStoreError : public std::runtime_error {
  public:
    UsageStoreError(int resultCode, const std::string& text, int systemError = 0)
        : std::runtime_error(text + " (" + std::to_string(resultCode) + ")" +
                             (systemError == 0
                                  ? std::string()
                                  : ": " + std::generic_category().message(systemError))),
          code(resultCode), message(text) {}

    int code;
    std::string message;

    /// Another process held the database's lock for longer than the store waits.
    bool isLocked() const { return (code & 0xff) == 5; }

    /// What the file holds is at fault: other tables, damaged pages, sums without end. A lock, a
    /// right and a full disk pass; this stays until the file goes.
    bool concernsContents() const {
        const int kind = code & 0xff;
        return kind == 1 || kind == 11 || kind == 26;
    }

    friend bool operator==(const UsageStoreError& a, const UsageStoreError& b) {
        return a.code == b.code && a.message == b.message;
    }
};

} // namespace tokwatch
