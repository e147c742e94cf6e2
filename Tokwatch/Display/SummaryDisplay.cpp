#include "Tokwatch/Display/SummaryDisplay.h"

#include "Tokwatch/Display/DayFormat.h"
#include "Tokwatch/Display/SummaryTexts.h"
#include "TokwatchCore/Presentation/MeterFormat.h"
#include "TokwatchCore/Support/Amounts.h"
#include "TokwatchCore/Support/CheckedArithmetic.h"
#include "TokwatchCore/Support/PlainText.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace tokwatch {
namespace {

std::string costText(std::optional<double> usd, bool approximate) {
    return (usd && approximate ? "~" : "") + MeterFormat::money(usd);
}

void addIfAny(std::vector<SummaryDisplay::Segment>& segments, TokenPart part, std::int64_t tokens) {
    if (tokens > 0)
        segments.push_back({part, static_cast<double>(tokens), MeterFormat::tokens(tokens)});
}

void addIfAny(std::vector<SummaryDisplay::Segment>& segments, TokenPart part, double usd) {
    if (usd > 0) segments.push_back({part, usd, MeterFormat::money(usd)});
}

} // namespace

std::string shownName(std::string_view name) {
    constexpr std::size_t longest = 500; // more than any path of people's
    const std::string title = plainText(boundedName(std::string(name), longest));
    return title.find_first_not_of(' ') == std::string::npos ? "(no name)" : title;
}

std::string_view labelOf(TokenPart part) {
    switch (part) {
    case TokenPart::input:
        return "Input";
    case TokenPart::cacheRead:
        return "Cache read";
    case TokenPart::cacheWrite:
        return "Cache write";
    case TokenPart::output:
        return "Output";
    case TokenPart::other:
        return "Other";
    }
    return "";
}

std::vector<UsageSummary::ModelRow>
SummaryDisplay::ranked(std::vector<UsageSummary::ModelRow> models, SummaryUnit unit) {
    // The summary's own order is by cost.
    if (unit == SummaryUnit::tokens)
        std::ranges::stable_sort(
            models, std::ranges::greater(),
            [](const UsageSummary::ModelRow& model) { return model.tokens.total(); });
    return models;
}

SummaryDisplay::Use SummaryDisplay::useOf(const UsageSummary::ModelRow& model) {
    return {model.costUSD, model.approximate, model.tokens.total(), model.costShare,
            model.tokenShare};
}

SummaryDisplay::Row SummaryDisplay::row(std::string_view title, const Use& use, int rank,
                                        SummaryUnit unit) {
    const bool isCost = unit == SummaryUnit::cost;
    const double share = std::min(1.0, isCost ? use.costShare : use.tokenShare);
    return {std::string(title), rank, std::nullopt, shownName(title),
            costText(use.costUSD, use.approximate),
            // A part of the cost is no more known than the cost.
            isCost && !use.costUSD ? unknown : MeterFormat::share(share),
            MeterFormat::tokens(use.tokens), share};
}

SummaryDisplay::Row SummaryDisplay::row(const UsageSummary::ModelRow& model, int rank,
                                        SummaryUnit unit) {
    Row shown = row(model.model, useOf(model), rank, unit);
    shown.id = std::string(rawValue(model.provider)) + "/" + model.model;
    shown.provider = model.provider;
    return shown;
}

SummaryDisplay::Row SummaryDisplay::row(const UsageSummary::DayRow& day, int rank,
                                        const UsageSummary& summary, SummaryUnit unit,
                                        const Calendar& calendar) {
    const double part = unit == SummaryUnit::cost ? day.costUSD : static_cast<double>(day.tokens);
    const double whole = unit == SummaryUnit::cost ? summary.totalCostUSD
                                                   : static_cast<double>(summary.tokens.total());
    const double share = whole > 0 ? std::min(1.0, part / whole) : 0;
    return {"day/" + calendar.dayKey(day.day),
            rank,
            std::nullopt,
            DayFormat::weekdayAndDay(day.day, calendar),
            MeterFormat::money(day.costUSD),
            MeterFormat::share(share),
            MeterFormat::tokens(day.tokens),
            share};
}

std::string SummaryDisplay::spoken(const Row& row, SummaryUnit unit) {
    std::string spoken = row.title;
    if (row.provider) spoken.append(", ").append(displayName(*row.provider));
    spoken += row.cost == unknown         ? ", price unknown"
              : row.cost.starts_with('~') ? ", about " + row.cost.substr(1)
                                          : ", " + row.cost;
    spoken += ", " + row.tokens + " tokens";
    if (row.share == unknown) return spoken;
    return spoken + ", " + row.share + (unit == SummaryUnit::cost ? " of cost" : " of tokens");
}

std::string SummaryDisplay::notes(const UsageSummary& summary) {
    const auto isShownApproximate = [](const UsageSummary::ModelRow& row) {
        return row.costUSD && row.approximate;
    };
    return notes(summary.hasUnknownPrices, std::ranges::any_of(summary.models, isShownApproximate));
}

std::string SummaryDisplay::notes(bool hasUnknownPrices, bool hasApproximateCosts) {
    std::string notes;
    if (hasUnknownPrices) notes = SummaryTexts::excludesUnknownPrices;
    if (hasApproximateCosts)
        notes.append(notes.empty() ? "" : "\n")
            .append("~ Priced like a similar model, or as its tool reported");
    return notes;
}

std::vector<SummaryDisplay::Segment> SummaryDisplay::segments(const UsageSummary& summary,
                                                              SummaryUnit unit) {
    std::vector<Segment> segments;
    if (unit == SummaryUnit::tokens) {
        addIfAny(segments, TokenPart::input, summary.tokens.uncachedInput);
        addIfAny(segments, TokenPart::cacheRead, summary.tokens.cacheRead);
        addIfAny(segments, TokenPart::cacheWrite, summary.tokens.cacheWrite());
        addIfAny(segments, TokenPart::output, summary.tokens.output);
    } else {
        addIfAny(segments, TokenPart::input, summary.costByType.input);
        addIfAny(segments, TokenPart::cacheRead, summary.costByType.cacheRead);
        addIfAny(segments, TokenPart::cacheWrite, summary.costByType.cacheWrite);
        addIfAny(segments, TokenPart::output, summary.costByType.output);
        addIfAny(segments, TokenPart::other, summary.costByType.other);
    }
    return segments;
}

SummaryDisplay::TokenStatistics SummaryDisplay::tokenStatistics(const UsageSummary& summary) {
    const TokenCounts& tokens = summary.tokens;
    return {MeterFormat::tokens(tokens.total()),
            MeterFormat::tokens(checkedAdd(tokens.cacheRead, tokens.cacheWrite())),
            MeterFormat::tokens(tokens.uncachedInput), MeterFormat::tokens(tokens.output),
            MeterFormat::money(summary.cacheSavingsUSD)};
}

std::vector<SummaryDisplay::ToolLine> SummaryDisplay::toolLines(const UsageSummary& summary,
                                                                SummaryUnit unit) {
    std::vector<ToolLine> lines;
    for (const UsageSummary::Tool& tool : summary.tools) {
        const bool cost = unit == SummaryUnit::cost;
        lines.push_back({tool.provider, counted(tool.sessions, "session"),
                         cost ? MeterFormat::money(tool.costUSD) : MeterFormat::tokens(tool.tokens),
                         cost ? MeterFormat::share(tool.costShare) + " of cost"
                              : MeterFormat::share(tool.tokenShare) + " of tokens"});
    }
    return lines;
}

std::vector<SummaryDisplay::Row> SummaryDisplay::modelRows(const UsageSummary& summary,
                                                           SummaryUnit unit) {
    std::vector<Row> rows;
    for (const UsageSummary::ModelRow& model : ranked(summary.models, unit))
        rows.push_back(row(model, static_cast<int>(rows.size()) + 1, unit));
    return rows;
}

std::vector<SummaryDisplay::Row>
SummaryDisplay::dayRows(const UsageSummary& summary, SummaryUnit unit, const Calendar& calendar) {
    std::vector<Row> rows;
    for (const UsageSummary::DayRow& day : summary.perDay)
        rows.push_back(row(day, static_cast<int>(rows.size()) + 1, summary, unit, calendar));
    return rows;
}

std::string SummaryDisplay::compactCost(double usd) {
    if (usd < 10 && std::trunc(usd) != usd) return MeterFormat::money(std::round(usd * 100) / 100);
    return MeterFormat::wholeMoney(usd);
}

std::string SummaryDisplay::compactTokens(std::int64_t tokens) {
    std::string text = MeterFormat::tokens(tokens);
    const char unit = text.back();
    if (text.find('.') == std::string::npos || unit < 'A') return text;
    text.pop_back();
    text.erase(text.find_last_not_of('0') + 1);
    if (text.ends_with('.')) text.pop_back();
    return text + unit;
}

std::string SummaryDisplay::headline(const UsageSummary& summary, SummaryUnit unit) {
    return unit == SummaryUnit::cost ? compactCost(summary.totalCostUSD)
                                     : compactTokens(summary.tokens.total());
}

} // namespace tokwatch
