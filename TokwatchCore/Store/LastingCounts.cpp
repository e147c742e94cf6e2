#include "TokwatchCore/Store/LastingCounts.h"

#include "TokwatchCore/Store/DatabaseFile.h"

namespace tokwatch {
namespace {

constexpr std::chrono::milliseconds lockPatience{5000};

constexpr sqlite::Tables tables{
    1, "CREATE TABLE days(\n"
       "  provider TEXT NOT NULL, model TEXT NOT NULL, day TEXT NOT NULL,\n"
       "  uncached INTEGER NOT NULL, cache_read INTEGER NOT NULL, w5m INTEGER NOT NULL,\n"
       "  w1h INTEGER NOT NULL, output INTEGER NOT NULL, reasoning INTEGER NOT NULL, usd REAL,\n"
       "  PRIMARY KEY(provider, model, day)) WITHOUT ROWID;"};

// MAX of several is null where one of them is.
constexpr const char* raise =
    "INSERT INTO days VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10)\n"
    "ON CONFLICT DO UPDATE SET\n"
    "  uncached = MAX(uncached, excluded.uncached),\n"
    "  cache_read = MAX(cache_read, excluded.cache_read),\n"
    "  w5m = MAX(w5m, excluded.w5m), w1h = MAX(w1h, excluded.w1h),\n"
    "  output = MAX(output, excluded.output), reasoning = MAX(reasoning, excluded.reasoning),\n"
    "  usd = MAX(IFNULL(usd, excluded.usd), IFNULL(excluded.usd, usd))\n"
    "WHERE excluded.uncached > uncached OR excluded.cache_read > cache_read\n"
    "  OR excluded.w5m > w5m OR excluded.w1h > w1h OR excluded.output > output\n"
    "  OR excluded.reasoning > reasoning OR excluded.usd > IFNULL(usd, -1)";

constexpr const char* selectSums =
    "SELECT provider, model, SUM(uncached), SUM(cache_read), SUM(w5m), SUM(w1h), SUM(output),\n"
    "  SUM(reasoning), SUM(usd) FROM days GROUP BY provider, model ORDER BY provider, model";

void keep(sqlite::Connection& db, const DailyRow& row, std::optional<double> usd) {
    const std::string provider(rawValue(row.provider));
    const TokenCounts& tokens = row.tokens;
    sqlite::Statement& statement = db.statement(raise);
    statement.bind(1, provider).bind(2, row.model).bind(3, row.day);
    int column = 3;
    for (const std::int64_t count : {tokens.uncachedInput, tokens.cacheRead, tokens.cacheWrite5m,
                                     tokens.cacheWrite1h, tokens.output, tokens.reasoning})
        statement.bind(++column, count);
    statement.bindNull(10);
    if (usd) statement.bind(10, *usd);
    statement.run();
}

std::vector<ModelCount> sums(sqlite::Connection& db) {
    std::vector<ModelCount> counts;
    const sqlite::Use row(db.statement(selectSums));
    while (row->step()) {
        // A provider that a later version of the program knows is not ours to show.
        const std::optional<ProviderID> provider = providerFromRawValue(row->text(0));
        if (!provider) continue;
        const TokenCounts tokens{row->integer(2), row->integer(3), row->integer(4),
                                 row->integer(5), row->integer(6), row->integer(7)};
        counts.push_back({*provider, row->text(1), tokens,
                          row->isNull(8) ? std::nullopt : std::optional(row->real(8))});
    }
    return counts;
}

} // namespace

std::vector<ModelCount> lastingCounts(const std::filesystem::path& file,
                                      std::span<const DailyRow> rows, const PriceTable& prices) {
    const std::unique_ptr<sqlite::Connection> db = sqlite::openTables(file, lockPatience, tables);
    sqlite::Transaction transaction(*db);
    for (const DailyRow& row : rows)
        keep(*db, row, prices.cost(row.model, row.tokens, row.reportedUSD).usd);
    std::vector<ModelCount> counts = sums(*db);
    transaction.commit();
    return counts;
}

std::filesystem::path countsBeside(const std::filesystem::path& database) {
    return database.parent_path() / "counts.sqlite";
}

} // namespace tokwatch
