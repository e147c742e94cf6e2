#include "LimitRows.h"

#include "LimitBarModel.h"
#include "MeterFormat.h"
#include "PlainText.h"
#include "StatusNotice.h"
#include "Text.h"
#include "TimeTexts.h"
#include "WindowLabel.h"

#include <algorithm>

namespace tokwatch {
namespace {

LimitRow::Level levelOf(double left, const LimitJudgement& judgement) {
    if (isAtOrBelow(left, judgement.criticalThreshold)) return LimitRow::Level::critical;
    if (isAtOrBelow(left, judgement.warningThreshold)) return LimitRow::Level::warning;
    return LimitRow::Level::normal;
}

QString resetSentence(const std::optional<std::string>& resetText) {
    if (!resetText) return {};
    return *resetText == "now" ? QString("Resets now") : "Resets in " + text(*resetText);
}

LimitRow limitRow(const LimitWindow& window, const LimitJudgement& judgement, Date now) {
    const LimitBarModel bar(window, now);
    LimitRow row;
    row.label = text(windowLabel(window));
    row.leftText = text(bar.percentLeftText);
    row.resetText = resetSentence(bar.resetText);
    row.paceSymbol = text(symbolName(bar.pace));
    row.paceCaption = text(caption(bar.pace));
    row.leftFraction = std::clamp(bar.leftFraction, 0.0, 1.0);
    row.timeLeftFraction = bar.timeLeftFraction.value_or(-1);
    row.level = levelOf(bar.leftFraction, judgement);
    row.isAhead = bar.pace == Pace::over;
    row.isStale = window.source.isStale();
    QStringList parts{row.label + " " + row.leftText + " left"};
    for (const QString& part : {row.resetText, row.paceCaption})
        if (!part.isEmpty()) parts.append(part);
    row.spoken = parts.join(". ");
    return row;
}

/// The moment of the oldest number shown that is not of now.
std::optional<Date> oldestStale(const ProviderLimits& limits) {
    std::optional<Date> oldest;
    for (const LimitWindow& window : limits.windows)
        if (const auto* stale = std::get_if<LimitSource::Stale>(&window.source.value))
            oldest = std::min(oldest.value_or(stale->asOf), stale->asOf);
    return oldest;
}

} // namespace

int seriesOf(ProviderID provider) {
    return static_cast<int>(provider);
}

QString creditsText(const Credits& credits) {
    const auto money = [](double usd) { return text(MeterFormat::money(usd)); };
    if (credits.spentUSD && credits.limitUSD)
        return QString("%1 of %2 used").arg(money(*credits.spentUSD), money(*credits.limitUSD));
    if (credits.balanceUSD) return money(*credits.balanceUSD) + " left";
    if (credits.unlimited)
        return credits.spentUSD ? money(*credits.spentUSD) + " used, no limit" : "Unlimited";
    if (credits.spentUSD) return money(*credits.spentUSD) + " used";
    return credits.limitUSD ? "Limit " + money(*credits.limitUSD) : QString();
}

std::vector<ProviderRow> providerRows(const std::vector<ProviderID>& providers,
                                      const std::vector<ProviderID>& present,
                                      const std::map<ProviderID, ProviderLimits>& limits,
                                      const LimitJudgement& judgement, Date now,
                                      const Calendar& calendar) {
    std::vector<ProviderRow> rows;
    for (const ProviderID provider : providers) {
        ProviderRow row;
        row.id = text(rawValue(provider));
        row.name = text(displayName(provider));
        row.series = seriesOf(provider);
        const auto found = limits.find(provider);
        const bool hasWindows = found != limits.end() && !found->second.windows.empty();
        if (std::ranges::count(present, provider) == 0 && !hasWindows) {
            row.isBrief = true;
            row.notice = "Not found on this computer";
            rows.push_back(std::move(row));
            continue;
        }
        const ProviderLimits* known = found == limits.end() ? nullptr : &found->second;
        if (known != nullptr) {
            row.plan = text(plainText(known->plan.value_or("")));
            for (const LimitWindow& window : known->windows)
                row.windows.append(QVariant::fromValue(limitRow(window, judgement, now)));
            if (known->credits) {
                row.creditsText = creditsText(*known->credits);
                if (!row.creditsText.isEmpty())
                    row.creditsLabel = text(plainText(known->credits->label));
            }
            if (const std::optional<Date> asOf = oldestStale(*known))
                row.staleText = "As of " + TimeTexts::moment(*asOf, now, calendar);
        }
        const StatusNotice notice = statusNotice(provider, known, judgement);
        row.notice = notice.sentence;
        row.isBrief = row.windows.isEmpty() && notice.isBrief;
        row.noticeIsCalm = notice.isCalm;
        row.action = notice.action;
        row.actionText = notice.actionText;
        rows.push_back(std::move(row));
    }
    return rows;
}

} // namespace tokwatch
