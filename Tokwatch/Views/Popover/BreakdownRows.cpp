#include "BreakdownRows.h"

#include "LimitRows.h"
#include "Text.h"

#include <algorithm>

namespace tokwatch {
namespace {

/// The summary ranks by cost; who looks at tokens wants them ranked.
UsageSummary rankedBy(SummaryUnit unit, UsageSummary summary) {
    if (unit == SummaryUnit::tokens)
        std::ranges::stable_sort(
            summary.models, std::ranges::greater(),
            [](const UsageSummary::ModelRow& row) { return row.tokens.total(); });
    return summary;
}

QString nameOf(std::optional<ProviderID> provider) {
    return provider ? text(displayName(*provider)) : QString();
}

QString spokenCost(const QString& cost) {
    if (cost == "—") return "price unknown";
    return cost.startsWith('~') ? "about " + cost.mid(1) : cost;
}

BreakdownRow rowOf(const SummaryDisplay::BreakdownRow& shown, SummaryUnit unit) {
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
    QStringList parts{row.title, spokenCost(cost), tokens + " tokens",
                      row.share + (isCost ? " of cost" : " of tokens")};
    if (shown.provider) {
        row.rank = QString::number(shown.rank);
        row.provider = text(rawValue(*shown.provider));
        row.series = seriesOf(*shown.provider);
        parts.insert(1, nameOf(shown.provider));
    }
    row.spoken = parts.join(", ");
    return row;
}

/// Six digits tell shares and fractions of a cent.
QString number(double value) {
    return QString::number(value, 'f', 6);
}

} // namespace

std::vector<BreakdownRow> breakdownRows(const UsageSummary& summary, BreakdownMode mode,
                                        SummaryUnit unit, const Calendar& calendar) {
    std::vector<BreakdownRow> rows;
    for (const SummaryDisplay::BreakdownRow& shown :
         SummaryDisplay::breakdown(rankedBy(unit, summary), mode, unit, calendar))
        rows.push_back(rowOf(shown, unit));
    return rows;
}

TableText breakdownTable(const UsageSummary& summary, BreakdownMode mode, SummaryUnit unit,
                         const Calendar& calendar) {
    const bool isModels = mode == BreakdownMode::model;
    TableText table;
    if (isModels)
        table.columns = {{"#", true}, {"Provider"}, {"Model"}};
    else
        table.columns = {{"Day"}};
    table.columns.insert(table.columns.end(), {{"Tokens", true}, {"Cost", true}, {"Share", true}});
    for (const SummaryDisplay::BreakdownRow& shown :
         SummaryDisplay::breakdown(rankedBy(unit, summary), mode, unit, calendar)) {
        QStringList fields;
        if (isModels) fields << QString::number(shown.rank) << nameOf(shown.provider);
        fields << text(shown.title) << text(shown.tokens) << text(shown.cost) << text(shown.share);
        table.rows.push_back(fields);
    }
    return table;
}

TableText breakdownData(const UsageSummary& summary, BreakdownMode mode, SummaryUnit unit,
                        const Calendar& calendar) {
    TableText table;
    if (mode == BreakdownMode::day) {
        table.columns = {{"Day"}, {"Sessions"}, {"Tokens"}, {"Cost (USD)"}};
        for (const UsageSummary::DayRow& day : summary.perDay)
            table.rows.push_back({text(calendar.dayKey(day.day)), QString::number(day.sessions),
                                  QString::number(day.tokens), number(day.costUSD)});
        return table;
    }
    table.columns = {{"Provider"},    {"Model"},      {"Tokens"},     {"Cost (USD)"},
                     {"Approximate"}, {"Cost share"}, {"Token share"}};
    for (const UsageSummary::ModelRow& model : rankedBy(unit, summary).models)
        table.rows.push_back(
            {nameOf(model.provider), text(model.model), QString::number(model.tokens.total()),
             model.costUSD ? number(*model.costUSD) : QString(), model.approximate ? "yes" : "no",
             number(model.costShare), number(model.tokenShare)});
    return table;
}

} // namespace tokwatch
