#include "Tokwatch/Views/Popover/Models/Breakdown.h"

#include "Tokwatch/Views/Common/Text.h"

namespace tokwatch {

TableText Breakdown::table() const {
    TableText table{labels(), {}};
    table.columns.insert(table.columns.end(), {{"Tokens", true}, {"Cost", true}, {"Share", true}});
    for (std::size_t at = 0; at < count(); ++at) {
        const SummaryDisplay::Row row = shown(at);
        table.rows.push_back(label(row) << text(row.tokens) << text(row.cost) << text(row.share));
    }
    return table;
}

BreakdownRow rowOf(const SummaryDisplay::Row& shown, SummaryUnit unit) {
    const bool isCost = unit == SummaryUnit::cost;
    const QString cost = text(shown.cost);
    const QString tokens = text(shown.tokens);
    BreakdownRow row;
    row.id = text(shown.id);
    row.title = inOneLine(text(shown.title));
    row.value = isCost ? cost : tokens;
    row.note = isCost ? tokens + " tokens" : cost;
    row.share = text(shown.share);
    row.fraction = shown.shareFraction;
    row.spoken = text(SummaryDisplay::spoken(shown, unit));
    return row;
}

QString plainNumber(double value) {
    return QString::number(value, 'f', 6);
}

std::vector<TableText::Column> useColumns() {
    return {{"Tokens"}, {"Cost (USD)"}, {"Approximate"}, {"Cost share"}, {"Token share"}};
}

QStringList useFields(const SummaryDisplay::Use& use) {
    return {QString::number(use.tokens), use.costUSD ? plainNumber(*use.costUSD) : QString(),
            use.approximate ? "yes" : "no", plainNumber(use.costShare),
            plainNumber(use.tokenShare)};
}

} // namespace tokwatch

#include "moc_Breakdown.cpp"
