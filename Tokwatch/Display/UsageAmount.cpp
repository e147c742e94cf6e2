#include "Tokwatch/Display/UsageAmount.h"

#include "TokwatchCore/Presentation/MeterFormat.h"
#include "TokwatchCore/Support/CheckedArithmetic.h"

namespace tokwatch {

UsageAmount& UsageAmount::operator+=(const UsageAmount& other) {
    costUSD += other.costUSD;
    tokens = checkedAdd(tokens, other.tokens);
    return *this;
}

std::string UsageAmount::text(SummaryUnit unit) const {
    return unit == SummaryUnit::cost ? MeterFormat::money(costUSD) : MeterFormat::tokens(tokens);
}

std::string UsageAmount::note(SummaryUnit unit) const {
    return unit == SummaryUnit::cost ? spoken(SummaryUnit::tokens) : text(SummaryUnit::cost);
}

std::string UsageAmount::spoken(SummaryUnit unit) const {
    return unit == SummaryUnit::cost ? text(unit) : text(unit) + " tokens";
}

} // namespace tokwatch
