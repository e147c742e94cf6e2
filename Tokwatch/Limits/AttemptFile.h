#pragma once

#include "Tokwatch/Limits/AttemptLedger.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>

namespace tokwatch {

/// The attempts of all processes over one data directory, in its "attempts.json" under the lock
/// "attempts.lock":
///
///     {"claude": {"lastAttempt": 812345678.5, "lastSuccess": …, "lastStatus": {"ok": {}},
///                 "currentDelay": 300, "isAnswered": true}}
///
/// Moments are in seconds since 2001. A file that is not a small regular one of this form counts as
/// absent, and nothing in its place holds us up: who keeps the lock
/// longer than `patience` is not waited for.
class AttemptFile final : public AttemptLedger {
  public:
    explicit AttemptFile(std::filesystem::path directory,
                         std::chrono::milliseconds patience = std::chrono::seconds(1));

    AttemptRecord edit(ProviderID provider, const Edit& edit) override;

  private:
    using Records = std::map<ProviderID, AttemptRecord>;

    Records read() const;
    void write(const Records& records) const;

    const std::filesystem::path directory;
    const std::chrono::milliseconds patience;
    std::mutex mutex; ///< within the process
    Records own;      ///< for what the file did not keep
};

/// The ledger beside this database; one in memory without any.
std::shared_ptr<AttemptLedger>
attemptLedgerBeside(const std::optional<std::filesystem::path>& database);

} // namespace tokwatch
