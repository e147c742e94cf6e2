#pragma once

#include "TokwatchCore/Records/UsageEvent.h"
#include "TokwatchCore/Store/SQLite.h"
#include "TokwatchCore/Support/Calendar.h"

#include <compare>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tokwatch {

/// Adds one batch of events to the database, inside a transaction of the caller's.
///
/// The stored result is that of one upsert an event, in order. To get there faster, keys go in
/// sorted (each page of their index is then touched once a batch instead of once an event), and
/// sums are added up in memory and written once for each provider, model and day.
class EventBatch {
  public:
    EventBatch(sqlite::Connection& db, const Calendar& calendar);

    /// Counts the events whose keys were not seen before; the first of several equal keys wins.
    std::int64_t add(std::span<const UsageEvent> events);

  private:
    struct RowKey {
        ProviderID provider;
        std::string_view model;
        std::string_view day;
        friend auto operator<=>(const RowKey&, const RowKey&) = default;
    };
    struct RowSums {
        TokenCounts stored; ///< what the row will hold, kept to notice a sum beyond 64 bits
        TokenCounts added;
        bool hasAdded = false;
    };
    struct SessionKey {
        ProviderID provider;
        std::string_view session;
        friend auto operator<=>(const SessionKey&, const SessionKey&) = default;
    };

    const std::string& dayOf(Date date);
    std::vector<bool> insertKeys(std::span<const UsageEvent> events);
    void addToRow(const UsageEvent& event, const std::string& day);
    TokenCounts storedCounts(const RowKey& key);
    void upsertRow(const RowKey& key, const TokenCounts& tokens,
                   std::optional<double> reportedCostUSD);
    void writeRows();
    void writeSessions();

    sqlite::Connection& db;
    const Calendar& calendar;
    std::map<Date, Calendar::Day> days; ///< by their start
    std::map<std::string, std::string> oddDays;
    std::map<RowKey, RowSums> rows;
    std::map<SessionKey, std::string_view> sessions; ///< to the earliest day
};

} // namespace tokwatch
