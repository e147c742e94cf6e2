#pragma once

#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Records/ProviderID.h"
#include "TokwatchCore/Support/Date.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tokwatch {

/// How much of a limit window was used at one moment.
struct LimitSample {
    Date moment;
    double usedFraction = 0;
    std::optional<Date> resetsAt;

    friend bool operator==(const LimitSample&, const LimitSample&) = default;
};

/// In time order, by the ids of windows.
using WindowSamples = std::map<std::string, std::vector<LimitSample>>;
using SamplesByProvider = std::map<ProviderID, WindowSamples>;

/// No two samples of a running window are closer than this; limits are fetched as often.
inline constexpr Seconds sampleSpacing{300};

/// What a window's number is a sample of; none of one that is shown again because a fetch failed.
std::optional<LimitSample> sampleOf(const LimitWindow& window, Date fetchedAt);

/// Whether two samples can be of one running window. Services work the reset out anew for each
/// answer, and a minute of difference is nothing.
bool haveSameReset(const LimitSample& a, const LimitSample& b);

/// Whether a sample tells what the one kept before it, if any, does not.
bool isWorthKeeping(const std::optional<LimitSample>& before, const LimitSample& sample);

} // namespace tokwatch
