#include "TokwatchCore/Store/StoredAccounts.h"

#include "TokwatchCore/Store/DatabaseFile.h"
#include "TokwatchCore/Store/UsageStore.h"

namespace tokwatch {

StoredAccounts::StoredAccounts(const std::filesystem::path& database)
    : db(sqlite::openFileForReading(database, UsageStore::lockPatience)) {
    // What others store meanwhile is not seen.
    db->execute("BEGIN");
}

StoredAccounts::~StoredAccounts() = default;

std::vector<DailyRow> StoredAccounts::rows() {
    std::vector<DailyRow> rows;
    const sqlite::Use query(
        db->statement("SELECT provider, model, day, uncached, cache_read, w5m, w1h, output, "
                      "reasoning, reported_usd FROM daily"));
    while (query->step()) {
        // A provider that a later version of the program knows has no files that this one knows.
        const std::optional<ProviderID> provider = providerFromRawValue(query->text(0));
        if (!provider) continue;
        const TokenCounts tokens{query->integer(3), query->integer(4), query->integer(5),
                                 query->integer(6), query->integer(7), query->integer(8)};
        rows.push_back({*provider, query->text(1), query->text(2), tokens,
                        query->isNull(9) ? std::nullopt : std::optional(query->real(9))});
    }
    return rows;
}

void StoredAccounts::forEachKey(
    const std::function<void(std::string_view key, std::string_view day)>& visit) {
    const sqlite::Use query(db->statement("SELECT key, day FROM seen"));
    while (query->step())
        visit(query->text(0), query->text(1));
}

std::unordered_map<std::string, std::string> StoredAccounts::cursorTexts() {
    std::unordered_map<std::string, std::string> texts;
    const sqlite::Use query(db->statement("SELECT path, json FROM cursors"));
    while (query->step())
        texts.emplace(query->text(0), query->text(1));
    return texts;
}

} // namespace tokwatch
