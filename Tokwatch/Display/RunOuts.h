#pragma once

#include "TokwatchCore/Records/LimitSample.h"
#include "TokwatchCore/Support/Calendar.h"
#include "TokwatchCore/Support/Date.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace tokwatch {

/// Which limits run out before their reset, and when, by their forecasts at one moment.
class RunOuts {
  public:
    /// None does.
    RunOuts() = default;
    RunOuts(const LimitsByProvider& limits, const SamplesByProvider& samples, Date now,
            const Calendar& calendar);

    std::optional<Date> moment(ProviderID provider, const std::string& window) const;
    /// Whether its use so far leaves something at the reset, without the allowance for limits that
    /// are on pace. Not where there is no forecast.
    bool lasts(ProviderID provider, const std::string& window) const;
    /// "runs out about 14:00", "runs out about Fri 9:00"; empty for one that lasts.
    std::string text(ProviderID provider, const std::string& window) const;

  private:
    struct RunOut {
        Date moment;
        std::string text;
    };
    const RunOut* find(ProviderID provider, const std::string& window) const;

    std::map<ProviderID, std::map<std::string, RunOut>> runOuts;
    std::set<std::pair<ProviderID, std::string>> lasting;
};

} // namespace tokwatch
