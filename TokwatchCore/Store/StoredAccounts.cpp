#include "TokwatchCore/Store/StoredAccounts.h"

#include "TokwatchCore/Store/DatabaseFile.h"
#include "TokwatchCore/Store/StoreRows.h"
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
    const sqlite::Use query(db->statement(selectUsage));
    while (query->step())
        if (std::optional<DailyRow> row = dailyRowIn(query)) rows.push_back(*std::move(row));
    return rows;
}

void StoredAccounts::forEachKey(
    const std::function<void(std::string_view key, std::string_view day)>& visit) {
    const sqlite::Use query(db->statement("SELECT key, day FROM seen"));
    while (query->step())
        visit(query->text(0), query->text(1));
}

std::unordered_map<std::string, std::string> StoredAccounts::cursorTexts() {
    return readCursorTexts(*db);
}

} // namespace tokwatch
