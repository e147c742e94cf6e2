#pragma once

#include "TokwatchCore/Records/LimitSample.h"
#include "TokwatchCore/Support/Calendar.h"
#include "TokwatchCore/Support/Date.h"

#include <map>
#include <optional>
#include <string>

namespace tokwatch {

/// Which limits run out before their reset, and when, by their forecasts at one moment.
class RunOuts {
  public:
    /// None does.
    RunOuts() = default;
    RunOuts(const LimitsByProvider& limits, const SamplesByProvider& samples, Date now,
            const Calendar& calendar);

    std::optional<Date> moment(ProviderID provider, const std::string& window) const;
    /// "runs out about 14:00", "runs out about Fri 9:00"; empty for one that lasts.
    std::string text(ProviderID provider, const std::string& window) const;

  private:
    struct RunOut {
        Date moment;
        std::string text;
    };
    const RunOut* find(ProviderID provider, const std::string& window) const;

    std::map<ProviderID, std::map<std::string, RunOut>> runOuts;
};

} // namespace tokwatch
