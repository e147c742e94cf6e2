#pragma once

#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Records/RecordCoding.h"
#include "TokwatchCore/Store/UsageSummary.h"
#include "TokwatchCore/Support/Calendar.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tokwatch {

/// The application's state in small, for readers in other processes that cannot open the store.
struct Snapshot {
    struct Provider {
        ProviderID id = ProviderID::claude;
        std::optional<std::string> plan;
        std::vector<LimitWindow> windows;
        std::optional<Credits> credits;
        ProviderStatus status = ProviderStatus::unavailable;
        std::int64_t tokens30d = 0;
        double cost30dUSD = 0;
        bool approximate = false; ///< the cost holds approximate prices
        friend bool operator==(const Provider&, const Provider&) = default;
    };

    Date generatedAt;
    std::vector<Provider> providers; ///< in the user's order, those with limits or usage
    double costTodayUSD = 0;
    double cost30dUSD = 0;
    std::vector<double> dailyCost30; ///< always 30 days, oldest first, today last

    /// Condenses a summary and the limits of the providers in `order`.
    static Snapshot make(const UsageSummary& summary,
                         const std::map<ProviderID, ProviderLimits>& limits,
                         const std::vector<ProviderID>& order, Date now, const Calendar& calendar);

    friend bool operator==(const Snapshot&, const Snapshot&) = default;
};

} // namespace tokwatch
