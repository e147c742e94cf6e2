#include "Tokwatch/Views/Popover/Models/Breakdown.h"

#include "Tokwatch/Views/Common/Text.h"

#include <algorithm>
#include <utility>

namespace tokwatch {
namespace {

QString nameOf(std::optional<ProviderID> provider) {
    return provider ? text(displayName(*provider)) : QString();
}

/// What the longest of the days' bars stands for.
double largestDay(const UsageSummary& summary, SummaryUnit unit) {
    double largest = 0;
    for (const UsageSummary::DayRow& day : summary.perDay)
        largest = std::max(largest, unit == SummaryUnit::cost ? day.costUSD
                                                              : static_cast<double>(day.tokens));
    const double whole = unit == SummaryUnit::cost ? summary.totalCostUSD
                                                   : static_cast<double>(summary.tokens.total());
    return whole > 0 ? largest / whole : 0;
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
    if (shown.provider) {
        row.rank = QString::number(shown.rank);
        row.provider = text(rawValue(*shown.provider));
    }
    return row;
}

/// Six digits tell shares and fractions of a cent.
QString number(double value) {
    return QString::number(value, 'f', 6);
}

constexpr int rowRole = Qt::UserRole;

int countOf(const std::optional<Breakdown>& breakdown) {
    return breakdown ? static_cast<int>(breakdown->count()) : 0;
}

} // namespace

Breakdown::Breakdown(UsageSummary whole, BreakdownMode mode, SummaryUnit shownUnit, Calendar days)
    : summary(std::move(whole)), breakdownMode(mode), unit(shownUnit), calendar(std::move(days)),
      largestShare(largestDay(summary, unit)) {
    summary.models = SummaryDisplay::ranked(std::move(summary.models), unit);
}

std::size_t Breakdown::count() const {
    return breakdownMode == BreakdownMode::model ? summary.models.size() : summary.perDay.size();
}

SummaryDisplay::Row Breakdown::shown(std::size_t at) const {
    const int rank = static_cast<int>(at) + 1;
    return breakdownMode == BreakdownMode::model
               ? SummaryDisplay::row(summary.models[at], rank, unit)
               : SummaryDisplay::row(summary.perDay[at], rank, summary, unit, calendar);
}

BreakdownRow Breakdown::row(std::size_t at) const {
    BreakdownRow row = rowOf(shown(at), unit);
    if (breakdownMode == BreakdownMode::day)
        row.fraction = largestShare > 0 ? std::min(1.0, row.fraction / largestShare) : 0;
    return row;
}

TableText Breakdown::table() const {
    const bool isModels = breakdownMode == BreakdownMode::model;
    TableText table;
    if (isModels)
        table.columns = {{"#", true}, {"Provider"}, {"Model"}};
    else
        table.columns = {{"Day"}};
    table.columns.insert(table.columns.end(), {{"Tokens", true}, {"Cost", true}, {"Share", true}});
    for (std::size_t at = 0; at < count(); ++at) {
        const SummaryDisplay::Row row = shown(at);
        QStringList fields;
        if (isModels) fields << QString::number(row.rank) << nameOf(row.provider);
        fields << text(row.title) << text(row.tokens) << text(row.cost) << text(row.share);
        table.rows.push_back(fields);
    }
    return table;
}

TableText Breakdown::data() const {
    TableText table;
    if (breakdownMode == BreakdownMode::day) {
        table.columns = {{"Day"}, {"Sessions"}, {"Tokens"}, {"Cost (USD)"}};
        for (const UsageSummary::DayRow& day : summary.perDay)
            table.rows.push_back({text(calendar.dayKey(day.day)), QString::number(day.sessions),
                                  QString::number(day.tokens), number(day.costUSD)});
        return table;
    }
    table.columns = {{"Provider"},    {"Model"},      {"Tokens"},     {"Cost (USD)"},
                     {"Approximate"}, {"Cost share"}, {"Token share"}};
    for (const UsageSummary::ModelRow& model : summary.models)
        table.rows.push_back(
            {nameOf(model.provider), text(model.model), QString::number(model.tokens.total()),
             model.costUSD ? number(*model.costUSD) : QString(), model.approximate ? "yes" : "no",
             number(model.costShare), number(model.tokenShare)});
    return table;
}

void BreakdownModel::assign(std::optional<Breakdown> next) {
    const int before = countOf(breakdown);
    const int after = countOf(next);
    if (!breakdown || !next || breakdown->mode() != next->mode()) {
        beginResetModel();
        breakdown = std::move(next);
        endResetModel();
        return;
    }
    if (after > before) {
        beginInsertRows({}, before, after - 1);
        breakdown = std::move(next);
        endInsertRows();
    } else if (after < before) {
        beginRemoveRows({}, after, before - 1);
        breakdown = std::move(next);
        endRemoveRows();
    } else {
        breakdown = std::move(next);
    }
    if (const int kept = std::min(before, after); kept > 0)
        emit dataChanged(index(0), index(kept - 1), {rowRole});
}

int BreakdownModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : countOf(breakdown);
}

QVariant BreakdownModel::data(const QModelIndex& index, int role) const {
    if (role != rowRole || !checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    return QVariant::fromValue(breakdown->row(static_cast<std::size_t>(index.row())));
}

QHash<int, QByteArray> BreakdownModel::roleNames() const {
    return {{rowRole, "row"}};
}

} // namespace tokwatch
