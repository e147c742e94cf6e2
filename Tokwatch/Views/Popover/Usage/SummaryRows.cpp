#include "Tokwatch/Views/Popover/Usage/SummaryRows.h"

#include "Tokwatch/Display/SummaryDisplay.h"
#include "Tokwatch/Display/SummaryTexts.h"
#include "Tokwatch/Views/Common/Text.h"
#include "TokwatchCore/Presentation/MeterFormat.h"

namespace tokwatch {
namespace {

QVariantList segmentRows(const UsageSummary& summary, SummaryUnit unit) {
    const std::vector<SummaryDisplay::Segment> segments = SummaryDisplay::segments(summary, unit);
    double whole = 0;
    for (const SummaryDisplay::Segment& segment : segments)
        whole += segment.amount;
    QVariantList rows;
    for (const SummaryDisplay::Segment& segment : segments)
        rows.append(QVariant::fromValue(SegmentRow{text(labelOf(segment.part)), text(segment.text),
                                                   segment.amount / whole,
                                                   static_cast<int>(segment.part)}));
    return rows;
}

QVariantList toolRows(const UsageSummary& summary, SummaryUnit unit) {
    QVariantList rows;
    for (const SummaryDisplay::ToolLine& line : SummaryDisplay::toolLines(summary, unit))
        rows.append(QVariant::fromValue(
            ToolRow{text(rawValue(line.provider)), text(displayName(line.provider)),
                    text(line.sessions), text(line.value), text(line.detail)}));
    return rows;
}

} // namespace

SummaryCard summaryCard(const UsageSummary& summary, SummaryUnit unit) {
    SummaryCard card;
    card.isEmpty = summary.tools.empty();
    if (card.isEmpty) {
        card.period = text(SummaryTexts::noUsage(summary.days));
        return card;
    }
    card.unit = static_cast<Segment::Unit>(unit);
    const bool leadsWithCost = unit == SummaryUnit::cost;
    const QString cost = text(SummaryDisplay::headline(summary, SummaryUnit::cost));
    const QString tokens = text(SummaryDisplay::headline(summary, SummaryUnit::tokens));
    const QString estimate = text(SummaryTexts::estimateSuffix);
    card.period = text(SummaryTexts::period(summary.days));
    card.headline = leadsWithCost ? cost : tokens;
    card.headlineNote = leadsWithCost ? estimate : QStringLiteral(" tokens");
    card.other = leadsWithCost ? tokens + " tokens" : cost + estimate;
    card.spoken = card.period + ": " + card.headline + card.headlineNote + ". " + card.other;
    if (summary.hasUnknownPrices) card.exclusion = text(SummaryTexts::excludesUnknownPrices);
    card.segments = segmentRows(summary, unit);
    card.tools = toolRows(summary, unit);
    return card;
}

} // namespace tokwatch

#include "moc_SummaryRows.cpp"
