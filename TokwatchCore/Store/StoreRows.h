#pragma once

#include "TokwatchCore/Store/SQLite.h"
#include "TokwatchCore/Store/UsageSummary.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

/// How the rows of the usage store's tables are read. Failures are UsageStoreErrors.
namespace tokwatch {

/// All rows of usage, each for `dailyRowIn`; the second those of the days ?1 to ?2. By their names,
/// as a later version of the program may have more columns in any order.
inline constexpr const char* selectUsage =
    "SELECT provider, model, day, uncached, cache_read, w5m, w1h, output, reasoning, reported_usd FROM daily";
inline constexpr const char* selectUsageOfDays =
    "SELECT provider, model, day, uncached, cache_read, w5m, w1h, output, reasoning, reported_usd FROM daily WHERE day >= ?1 AND day <= ?2";
/// None of a provider that only a later version of the program knows: it has no files that this one
/// reads, and is not ours to show.
std::optional<DailyRow> dailyRowIn(const sqlite::Use& row);

using CursorRowVisitor = std::function<void(std::string_view path, std::string_view json)>;
void visitCursorRows(sqlite::Connection& db, const CursorRowVisitor& visit);
/// The cursors' texts by their paths.
std::unordered_map<std::string, std::string> readCursorTexts(sqlite::Connection& db);

} // namespace tokwatch
