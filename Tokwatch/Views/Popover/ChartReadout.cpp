#include "Tokwatch/Views/Popover/ChartReadout.h"

#include "Tokwatch/Views/Common/Text.h"
#include "TokwatchCore/Presentation/MeterFormat.h"
#include "TokwatchCore/Support/CheckedArithmetic.h"

namespace tokwatch {

ChartAmount& ChartAmount::operator+=(const ChartAmount& other) {
    costUSD += other.costUSD;
    tokens = checkedAdd(tokens, other.tokens);
    return *this;
}

QString ChartAmount::text(SummaryUnit unit) const {
    return tokwatch::text(unit == SummaryUnit::cost ? MeterFormat::money(costUSD)
                                                    : MeterFormat::tokens(tokens));
}

QString ChartAmount::note(SummaryUnit unit) const {
    return unit == SummaryUnit::cost ? spoken(SummaryUnit::tokens) : text(SummaryUnit::cost);
}

QString ChartAmount::spoken(SummaryUnit unit) const {
    return unit == SummaryUnit::cost ? text(unit) : text(unit) + " tokens";
}

} // namespace tokwatch
