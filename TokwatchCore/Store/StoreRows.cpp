#include "TokwatchCore/Store/StoreRows.h"

namespace tokwatch {

std::optional<DailyRow> dailyRowIn(const sqlite::Use& row) {
    const std::optional<ProviderID> provider = providerFromRawValue(row->text(0));
    if (!provider) return std::nullopt;
    const TokenCounts tokens{row->integer(3), row->integer(4), row->integer(5),
                             row->integer(6), row->integer(7), row->integer(8)};
    return DailyRow{*provider, row->text(1), row->text(2), tokens,
                    row->isNull(9) ? std::nullopt : std::optional(row->real(9))};
}

void visitCursorRows(sqlite::Connection& db, const CursorRowVisitor& visit) {
    const sqlite::Use query(db.statement("SELECT path, json FROM cursors"));
    while (query->step())
        visit(query->textView(0), query->textView(1));
}

std::unordered_map<std::string, std::string> readCursorTexts(sqlite::Connection& db) {
    std::unordered_map<std::string, std::string> texts;
    visitCursorRows(
        db, [&texts](std::string_view path, std::string_view json) { texts.emplace(path, json); });
    return texts;
}

} // namespace tokwatch
