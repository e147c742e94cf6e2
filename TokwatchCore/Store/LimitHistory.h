#pragma once

#include "TokwatchCore/Records/LimitSample.h"
#include "TokwatchCore/Store/SQLite.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>

namespace tokwatch {

class UsageStore;

/// How limits were used in the last 90 days: a table of samples in a database of its own,
///
///     samples(provider, window, moment, used, reset)
///
/// moments in seconds since 1970, `reset` null where it is not known. The schema's version is 1;
/// later versions are used as they are.
///
/// Callable from any thread, and several processes share the file. It is opened for each call and
/// has no side files between calls: there is little to write, every five minutes at most, and who
/// removes or replaces the file meanwhile harms nobody. A mere convenience: what fails, for
/// whatever is wrong with the file, is told in the log once, and limits do without it.
class LimitHistory {
  public:
    static constexpr std::int32_t schemaVersion = 1;
    /// Older samples are deleted as others come.
    static constexpr Seconds keptTime{90 * 86'400.0};
    /// How long another process may hold the lock: a result is not shown before it is recorded.
    static constexpr std::chrono::milliseconds lockPatience{500};

    explicit LimitHistory(std::filesystem::path file,
                          std::chrono::milliseconds patience = lockPatience);

    /// Keeps a sample of each window whose number is of this result and worth keeping. Only who
    /// stores a result calls it.
    void record(const ProviderLimits& limits, ProviderID provider);

    /// The samples in the time of these windows, as far as they run. Nothing is made where there is
    /// no file; absent where it cannot be read.
    std::optional<SamplesByProvider> samples(const LimitsByProvider& limits, Date now);

    /// Throws UsageStoreError where a sample could not be recorded, or not all can be read.
    void requireUsable() const;

    const std::filesystem::path& path() const { return file; }

  private:
    std::unique_ptr<sqlite::Connection> open() const;
    std::unique_ptr<sqlite::Connection> openForReading() const;
    void tell(std::string_view reason);

    const std::filesystem::path file;
    const std::chrono::milliseconds patience;
    std::mutex mutex; ///< over `isTold`
    bool isTold = false;
};

/// Has every result recorded that the store takes; to be called before others use the store. No
/// history, no records.
void recordLimits(UsageStore& store, std::shared_ptr<LimitHistory> history);

/// The history beside this database; null without one.
std::shared_ptr<LimitHistory>
limitHistoryBeside(const std::optional<std::filesystem::path>& database,
                   std::chrono::milliseconds patience = LimitHistory::lockPatience);

} // namespace tokwatch
