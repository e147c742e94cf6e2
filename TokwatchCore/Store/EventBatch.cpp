#include "TokwatchCore/Store/EventBatch.h"

#include "TokwatchCore/Support/CheckedArithmetic.h"

#include <algorithm>
#include <cstdint>

namespace tokwatch {
namespace {

constexpr const char* insertKey = "INSERT OR IGNORE INTO seen(key, day) VALUES(?1, ?2)";

constexpr const char* selectRow =
    "SELECT uncached, cache_read, w5m, w1h, output, reasoning FROM daily WHERE provider = ?1 AND model = ?2 AND day = ?3";

constexpr const char* upsertDaily =
    "INSERT INTO daily(provider, model, day, uncached, cache_read, w5m, w1h, output, reasoning, reported_usd)\n"
    "VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10)\n"
    "ON CONFLICT(provider, model, day) DO UPDATE SET\n"
    "  uncached = uncached + excluded.uncached,\n"
    "  cache_read = cache_read + excluded.cache_read,\n"
    "  w5m = w5m + excluded.w5m,\n"
    "  w1h = w1h + excluded.w1h,\n"
    "  output = output + excluded.output,\n"
    "  reasoning = reasoning + excluded.reasoning,\n"
    "  reported_usd = CASE WHEN excluded.reported_usd IS NULL THEN reported_usd\n"
    "                      WHEN reported_usd IS NULL THEN excluded.reported_usd\n"
    "                      ELSE reported_usd + excluded.reported_usd END";

constexpr const char* upsertSession =
    "INSERT INTO sessions(provider, session_id, day) VALUES(?1, ?2, ?3)\n"
    "ON CONFLICT(provider, session_id) DO UPDATE SET day = excluded.day WHERE excluded.day < day";

/// How many bytes all keys begin with: the tools' keys share a prefix such as "msg_".
std::size_t commonPrefix(std::span<const UsageEvent> events) {
    if (events.empty()) return 0;
    const std::string_view first = events.front().dedupKey;
    std::size_t length = first.size();
    for (const UsageEvent& event : events) {
        const std::string_view key = event.dedupKey;
        length = std::min(length, key.size());
        while (length > 0 && key.compare(0, length, first, 0, length) != 0)
            --length;
    }
    return length;
}

/// Eight bytes of a key as a number that orders as they do, zeros after its end.
std::uint64_t bytesAt(std::string_view key, std::size_t offset) {
    std::uint64_t number = 0;
    for (std::size_t i = offset; i < offset + 8; ++i)
        number = number << 8U | (i < key.size() ? static_cast<unsigned char>(key[i]) : 0U);
    return number;
}

/// The events' positions in the order of their keys; of equal keys the one that came first is
/// first.
std::vector<std::uint32_t> inKeyOrder(std::span<const UsageEvent> events) {
    struct Entry {
        std::uint64_t bytes; ///< decides nearly all comparisons without a look at the key
        std::uint32_t position;
    };
    const std::size_t prefix = commonPrefix(events);
    std::vector<Entry> entries;
    entries.reserve(events.size());
    for (const UsageEvent& event : events)
        entries.push_back(
            {bytesAt(event.dedupKey, prefix), static_cast<std::uint32_t>(entries.size())});
    std::sort(entries.begin(), entries.end(), [events](const Entry& a, const Entry& b) {
        if (a.bytes != b.bytes) return a.bytes < b.bytes;
        const int order = events[a.position].dedupKey.compare(events[b.position].dedupKey);
        return order != 0 ? order < 0 : a.position < b.position;
    });
    std::vector<std::uint32_t> positions;
    positions.reserve(entries.size());
    for (const Entry& entry : entries)
        positions.push_back(entry.position);
    return positions;
}

} // namespace

EventBatch::EventBatch(sqlite::Connection& connection, const Calendar& c)
    : db(connection), calendar(c) {}

std::int64_t EventBatch::add(std::span<const UsageEvent> events) {
    const std::vector<bool> isNew = insertKeys(events);
    std::int64_t count = 0;
    for (std::size_t i = 0; i < events.size(); ++i) {
        if (!isNew[i]) continue;
        const UsageEvent& event = events[i];
        const std::string& day = dayOf(event.timestamp);
        addToRow(event, day);
        const auto [session, inserted] =
            sessions.try_emplace({event.provider, event.sessionID}, day);
        if (!inserted) session->second = std::min<std::string_view>(session->second, day);
        ++count;
    }
    writeRows();
    writeSessions();
    return count;
}

std::vector<bool> EventBatch::insertKeys(std::span<const UsageEvent> events) {
    std::vector<bool> isNew(events.size());
    sqlite::Statement& insert = db.statement(insertKey);
    for (const std::uint32_t i : inKeyOrder(events)) {
        insert.bind(1, events[i].dedupKey).bind(2, dayOf(events[i].timestamp));
        isNew[i] = insert.run() > 0;
    }
    return isNew;
}

const std::string& EventBatch::dayOf(Date date) {
    auto next = days.upper_bound(date);
    if (next != days.begin()) {
        const Calendar::Day& day = std::prev(next)->second;
        if (date < day.end) return day.key;
    }
    Calendar::Day day = calendar.dayHolding(date);
    if (day.start <= date && date < day.end)
        return days.emplace(day.start, std::move(day)).first->second.key;
    // Near a midnight that came twice: the span does not cover the date, but the key is right.
    return oddDays.try_emplace(day.key, day.key).first->second;
}

void EventBatch::addToRow(const UsageEvent& event, const std::string& day) {
    const RowKey key{event.provider, event.model, day};
    const auto [found, inserted] = rows.try_emplace(key);
    RowSums& row = found->second;
    const auto describe = [&key] { return usageOrigin(key.provider, key.model, key.day); };
    const SumOrigin sumOrigin(describe);
    if (inserted) row.stored = storedCounts(key);
    row.stored += event.tokens;
    if (event.reportedCostUSD) {
        // A sum of doubles depends on its order, so these are never added up beforehand.
        upsertRow(key, event.tokens, event.reportedCostUSD);
    } else {
        row.added += event.tokens;
        row.hasAdded = true;
    }
}

TokenCounts EventBatch::storedCounts(const RowKey& key) {
    const std::string provider(rawValue(key.provider));
    const std::string model(key.model);
    const std::string day(key.day);
    sqlite::Use select(db.statement(selectRow));
    select->bind(1, provider).bind(2, model).bind(3, day);
    if (!select->step()) return TokenCounts::zero;
    return {select->integer(0), select->integer(1), select->integer(2),
            select->integer(3), select->integer(4), select->integer(5)};
}

void EventBatch::upsertRow(const RowKey& key, const TokenCounts& tokens,
                           std::optional<double> reportedCostUSD) {
    const std::string provider(rawValue(key.provider));
    const std::string model(key.model);
    const std::string day(key.day);
    sqlite::Statement& upsert = db.statement(upsertDaily);
    upsert.bind(1, provider).bind(2, model).bind(3, day);
    upsert.bind(4, tokens.uncachedInput).bind(5, tokens.cacheRead).bind(6, tokens.cacheWrite5m);
    upsert.bind(7, tokens.cacheWrite1h).bind(8, tokens.output).bind(9, tokens.reasoning);
    if (reportedCostUSD) {
        upsert.bind(10, *reportedCostUSD);
    } else {
        upsert.bindNull(10);
    }
    upsert.run();
}

void EventBatch::writeRows() {
    for (const auto& [key, sums] : rows) {
        if (sums.hasAdded) upsertRow(key, sums.added, std::nullopt);
    }
}

void EventBatch::writeSessions() {
    sqlite::Statement& upsert = db.statement(upsertSession);
    for (const auto& [key, earliest] : sessions) {
        const std::string provider(rawValue(key.provider));
        const std::string session(key.session);
        const std::string day(earliest);
        upsert.bind(1, provider).bind(2, session).bind(3, day).run();
    }
}

} // namespace tokwatch
