#pragma once

#include "Platform/Linux/UserPaths.h"
#include "Tokwatch/CommandLine/Frame/CommandError.h"
#include "Tokwatch/CommandLine/Terminal/Terminal.h"
#include "Tokwatch/Display/RunOuts.h"
#include "TokwatchCore/Ingestion/ProviderLocations.h"
#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Store/PriceTable.h"
#include "TokwatchCore/Store/UsageStore.h"
#include "TokwatchCore/Support/Calendar.h"
#include "TokwatchCore/Support/Date.h"

#include <memory>
#include <span>
#include <string>

namespace tokwatch {

class LimitHistory;
struct PlainSettings;

/// What a one-shot command takes from outside: the process's own, but for what options replaced.
struct CommandSurroundings {
    UserPaths paths;
    CalendarSource calendar;
    Clock now;
    Terminal& terminal;
    bool json = false;
    std::shared_ptr<LimitHistory> history = nullptr; ///< none without a data directory

    ProviderLocations locations() const { return {paths.home}; }

    /// The store's file; without a data directory a CommandError.
    std::filesystem::path requireDatabase() const;

    /// The store in the data directory. A one-shot command has no use for a temporary one: what it
    /// counted would be lost at its exit, so a store that cannot be opened is a CommandError.
    std::shared_ptr<UsageStore> openStore() const;

    /// The same for a command that only reads: a store that is sound but cannot be written, on a
    /// disk that is full or read-only, is shown as it is, with the reason in the log.
    std::shared_ptr<UsageStore> openStoreForReading() const;

    /// The last known limits of these providers as they are to be shown: Claude's by the
    /// switch for it. CommandError when the store fails.
    LimitsByProvider limits(UsageStore& store, const PlainSettings& settings,
                            std::span<const ProviderID> providers) const;

    /// Which of these limits run out, by their history; none where that cannot be read.
    RunOuts runOuts(const LimitsByProvider& limits) const;

    /// CommandError when the home directory does not exist or is no directory.
    void requireHome() const;
};

} // namespace tokwatch
