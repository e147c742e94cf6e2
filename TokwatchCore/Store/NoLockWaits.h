#pragma once

namespace tokwatch {

/// As long as one lives, nobody in this process waits for another one's lock on a database: what
/// would wait fails at once, as locked. For a program that ends. Of any thread.
class NoLockWaits {
  public:
    NoLockWaits();
    ~NoLockWaits();
    NoLockWaits(const NoLockWaits&) = delete;
    NoLockWaits& operator=(const NoLockWaits&) = delete;

    static bool areInForce();
};

} // namespace tokwatch
