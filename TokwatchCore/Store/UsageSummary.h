#pragma once

#include "TokwatchCore/Records/ProviderID.h"
#include "TokwatchCore/Records/RecordCoding.h"
#include "TokwatchCore/Records/TokenCounts.h"
#include "TokwatchCore/Store/PriceTable.h"
#include "TokwatchCore/Support/Calendar.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tokwatch {

/// Local usage over the last N calendar days: the one aggregate that every display draws from.
/// A single number of tokens is always `TokenCounts::total()`, processed tokens. Money is US
/// dollars.
struct UsageSummary {
    struct Tool {
        ProviderID provider = ProviderID::claude;
        std::int64_t sessions = 0;
        std::int64_t tokens = 0;
        double costUSD = 0;
        double costShare = 0;  ///< 0…1
        double tokenShare = 0; ///< 0…1
        bool approximate = false;
        friend bool operator==(const Tool&, const Tool&) = default;
    };
    struct DayPoint {
        Date day; ///< start of that day
        ProviderID provider = ProviderID::claude;
        std::int64_t tokens = 0;
        double costUSD = 0;
        friend bool operator==(const DayPoint&, const DayPoint&) = default;
    };
    struct ModelRow {
        ProviderID provider = ProviderID::claude;
        std::string model;
        std::optional<double> costUSD; ///< absent when no row of the model had a cost
        double costShare = 0;
        double tokenShare = 0;
        TokenCounts tokens;
        bool approximate = false;
        friend bool operator==(const ModelRow&, const ModelRow&) = default;
    };
    struct DayRow {
        Date day;
        double costUSD = 0;
        std::int64_t tokens = 0;
        std::int64_t sessions = 0;
        friend bool operator==(const DayRow&, const DayRow&) = default;
    };

    std::int64_t days = 1; ///< calendar days covered, at least 1
    Date windowEnd;        ///< start of the last day, today
    double totalCostUSD = 0;
    std::int64_t sessions = 0;
    std::vector<Tool> tools;      ///< those with data, the costliest first
    std::vector<DayPoint> daily;  ///< by provider in declaration order, then by day; zero-filled
    std::vector<ModelRow> models; ///< the costliest first, models without a price last
    std::vector<DayRow> perDay;   ///< days with data, newest first
    TokenCounts tokens;
    CostBreakdown costByType;
    double cacheSavingsUSD = 0;
    bool hasUnknownPrices = false; ///< some tokens have neither a price nor a reported cost

    friend bool operator==(const UsageSummary&, const UsageSummary&) = default;
};

/// One stored row: the sums of one provider, model and day.
struct DailyRow {
    ProviderID provider = ProviderID::claude;
    std::string model;
    std::string day; ///< day key
    TokenCounts tokens;
    std::optional<double> reportedUSD;
};

/// The number of sessions of one provider that began on one day.
struct SessionCount {
    ProviderID provider = ProviderID::claude;
    std::string day; ///< day key
    std::int64_t sessions = 0;
};

/// The days of a summary: their starts, oldest first, and the keys that stored rows carry.
struct SummaryWindow {
    std::vector<Date> days;
    std::vector<std::string> keys;
    Date today;
    std::string todayKey;

    SummaryWindow(std::int64_t days, Date now, const Calendar& calendar);
    const std::string& firstKey() const { return keys.empty() ? todayKey : keys.front(); }
};

/// Computes the summary of the window from its stored rows. A sum beyond 64 bits stops the program.
UsageSummary summarize(std::int64_t days, const SummaryWindow& window,
                       const std::vector<DailyRow>& rows, const std::vector<SessionCount>& sessions,
                       const PriceTable& prices);

} // namespace tokwatch
