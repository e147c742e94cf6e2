#include "Tokwatch/Views/Popover/Models/Breakdown.h"

#include "Tokwatch/Views/Common/Text.h"

namespace tokwatch {

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

} // namespace tokwatch
