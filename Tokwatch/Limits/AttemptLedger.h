#pragma once

#include "Tokwatch/Limits/RefreshPolicy.h"
#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Records/ProviderID.h"
#include "TokwatchCore/Support/Date.h"

#include <functional>
#include <map>
#include <mutex>
#include <optional>

namespace tokwatch {

/// How asking one provider's service went, by whichever process.
struct AttemptRecord {
    std::optional<Date> lastAttempt;
    std::optional<Date> lastSuccess;
    std::optional<ProviderStatus> lastStatus;
    Seconds currentDelay = RefreshPolicy::baseInterval;
    /// False from the attempt until its status is noted: for ever when its process was killed.
    bool isAnswered = true;

    bool operator==(const AttemptRecord&) const = default;

    /// The least time from the last attempt to the next; `force` is a user's retry.
    Seconds spacing(bool force) const;
    /// What is left of it; zero or less when the service may be asked.
    Seconds wait(bool force, Date now) const;
};

/// Where all processes of a user note their attempts, so that they ask a service as often as one of
/// them would. Usable from any thread; may wait for a moment, hence not on the main one.
class AttemptLedger {
  public:
    /// Changes a record, or returns false to leave it.
    using Edit = std::function<bool(AttemptRecord& record)>;

    /// A record as it is after an edit.
    struct Entry {
        AttemptRecord record;
        /// All processes see it. What cannot be kept where they do is kept for this process alone,
        /// and an attempt of which the others cannot know must not be made.
        bool isShared = true;
    };

    virtual ~AttemptLedger() = default;

    /// Reads, edits and keeps a record with nobody in between. Never fails. The edit may be called
    /// more than once.
    virtual Entry edit(ProviderID provider, const Edit& edit) = 0;
};

/// Attempts of this process alone, for tests and where there is no data directory.
class MemoryAttemptLedger final : public AttemptLedger {
  public:
    Entry edit(ProviderID provider, const Edit& edit) override;

  private:
    std::mutex mutex;
    std::map<ProviderID, AttemptRecord> records;
};

} // namespace tokwatch
