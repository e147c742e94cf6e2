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
/// absent, and nothing in its place holds us up: who keeps the lock longer than `patience` is not
/// waited for.
///
/// Where that directory takes no file (a full or read-only disk, something odd in the file's
/// place), the same is kept in a second one, which lasts as long as the session and is on no disk.
class AttemptFile final : public AttemptLedger {
  public:
    /// `refuge` is the second directory; absent where there is none.
    explicit AttemptFile(std::filesystem::path directory,
                         std::optional<std::filesystem::path> refuge = std::nullopt,
                         std::chrono::milliseconds patience = std::chrono::seconds(1));

    Entry edit(ProviderID provider, const Edit& edit) override;

  private:
    using Records = std::map<ProviderID, AttemptRecord>;

    Records known() const;
    void editIn(const std::filesystem::path& place, ProviderID provider, const Edit& edit);
    void tell(const std::string& reason);

    const std::filesystem::path directory;
    const std::optional<std::filesystem::path> refuge;
    const std::chrono::milliseconds patience;
    std::mutex mutex; ///< within the process
    Records own;      ///< for what the files did not keep
    bool isTold = false;
};

/// The ledger beside this database, with a refuge in $XDG_RUNTIME_DIR; one in memory without any.
std::shared_ptr<AttemptLedger>
attemptLedgerBeside(const std::optional<std::filesystem::path>& database);

} // namespace tokwatch
