#include "Tokwatch/Views/Popover/LimitRows.h"

#include "Tokwatch/Display/DayFormat.h"
#include "Tokwatch/Display/LimitTexts.h"
#include "Tokwatch/Display/Severity.h"
#include "Tokwatch/Display/TimeTexts.h"
#include "Tokwatch/Views/Common/Text.h"
#include "Tokwatch/Views/Popover/StatusNotice.h"
#include "TokwatchCore/Presentation/LimitAge.h"
#include "TokwatchCore/Presentation/LimitBarModel.h"
#include "TokwatchCore/Presentation/WindowLabel.h"
#include "TokwatchCore/Support/PlainText.h"

#include <algorithm>
#include <cmath>

namespace tokwatch {
namespace {

/// "60% used, 50% of the time gone"
QString paceSentence(const LimitBarModel& bar) {
    if (!bar.timeLeftFraction) return {};
    return QString("%1% used in %2% of the time")
        .arg(std::lround((1 - bar.leftFraction) * 100))
        .arg(std::lround((1 - *bar.timeLeftFraction) * 100));
}

LimitRow limitRow(const LimitWindow& window, const ProviderLimits& limits,
                  const LimitJudgement& judgement, Date now, const Calendar& calendar) {
    const LimitBarModel bar(window, now);
    LimitRow row;
    row.label = text(windowLabel(window));
    row.leftText = text(bar.percentLeftText);
    row.resetText = sentence(LimitTexts::reset(window, bar, now, calendar));
    // Where nothing is left, the pace is over.
    constexpr double leastLeft = 0.01;
    const Pace pace = bar.leftFraction < leastLeft ? Pace::unknown : bar.pace;
    row.paceSymbol = text(symbolName(pace));
    row.paceCaption = text(caption(pace));
    row.paceText = paceSentence(bar);
    row.leftFraction = std::clamp(bar.leftFraction, 0.0, 1.0);
    row.timeLeftFraction = bar.timeLeftFraction.value_or(-1);
    if (bar.timeLeftFraction)
        row.timeText = QString("This mark is time: %1% of this limit's period is left")
                           .arg(std::lround(*bar.timeLeftFraction * 100));
    row.level = static_cast<Level::Value>(
        severityOf(bar.leftFraction, judgement.warningThreshold, judgement.criticalThreshold));
    row.isAhead = pace == Pace::over;
    row.isOld = LimitAge::isOld(window, limits.fetchedAt, now);
    QStringList parts{row.label + " " + row.leftText + " left"};
    for (const QString& part : {row.resetText, row.paceCaption})
        if (!part.isEmpty()) parts.append(part);
    row.spoken = parts.join(". ");
    return row;
}

/// The moment of the oldest number that is not of the latest answer, or that has grown old.
std::optional<Date> oldest(const ProviderLimits& limits, Date now) {
    std::optional<Date> oldest;
    for (const LimitWindow& window : limits.windows) {
        const bool isLive = std::holds_alternative<LimitSource::Live>(window.source.value);
        const Date asOf = LimitAge::asOf(window, limits.fetchedAt);
        if (!isLive || LimitAge::isOld(window, limits.fetchedAt, now))
            oldest = std::min(oldest.value_or(asOf), asOf);
    }
    return oldest;
}

const ProviderLimits* limitsOf(const ProvidersKnown& known, ProviderID provider) {
    const auto found = known.limits.find(provider);
    return found == known.limits.end() ? nullptr : &found->second;
}

AttemptTimes attemptsOf(const ProvidersKnown& known, ProviderID provider) {
    const auto found = known.attempts.find(provider);
    return found == known.attempts.end() ? AttemptTimes() : found->second;
}

/// Whether nobody can expect numbers of the provider.
bool isQuiet(const ProvidersKnown& known, ProviderID provider) {
    const ProviderLimits* limits = limitsOf(known, provider);
    if (limits != nullptr && (!limits->windows.empty() || limits->credits)) return false;
    return !traits(provider).publishesLimits || std::ranges::count(known.present, provider) == 0;
}

ProviderRow providerRow(const ProvidersKnown& known, ProviderID provider, Date now,
                        const Calendar& calendar) {
    ProviderRow row;
    row.id = text(rawValue(provider));
    row.name = text(displayName(provider));
    const ProviderLimits* limits = limitsOf(known, provider);
    if (limits != nullptr) {
        row.plan = text(plainText(limits->plan.value_or("")));
        for (const LimitWindow& window : limits->windows)
            row.windows.append(
                QVariant::fromValue(limitRow(window, *limits, known.judgement, now, calendar)));
        if (limits->credits) {
            row.creditsText = sentence(LimitTexts::credits(*limits->credits));
            if (!row.creditsText.isEmpty())
                row.creditsLabel = text(plainText(limits->credits->label));
        }
        if (const std::optional<Date> asOf = oldest(*limits, now))
            row.asOfText = "As of " + text(DayFormat::moment(*asOf, now, calendar));
    }
    const AttemptTimes attempts = attemptsOf(known, provider);
    const StatusNotice notice =
        statusNotice({provider, limits, known.judgement, attempts.nextFetch}, now, calendar);
    row.notice = notice.sentence;
    row.noticeIsCalm = notice.isCalm;
    row.action = notice.action;
    row.actionText = notice.actionText;
    const bool asksAgain =
        row.action == ProviderAction::retry || row.action == ProviderAction::allowAccess;
    if (asksAgain) row.tryText = tryText(attempts, now, calendar);
    return row;
}

} // namespace

QString tryText(const AttemptTimes& times, Date now, const Calendar& calendar) {
    if (times.isUnderWay) return QStringLiteral("Trying…");
    if (!times.lastAttempt || !times.nextRetry || *times.nextRetry <= now) return {};
    return text("Tried " + TimeTexts::age(*times.lastAttempt, now, calendar) + " · again in " +
                TimeTexts::remaining(*times.nextRetry, now));
}

std::vector<ProviderRow> providerRows(const ProvidersKnown& known, Date now,
                                      const Calendar& calendar) {
    std::vector<ProviderRow> rows;
    for (const ProviderID provider : known.providers)
        if (!isQuiet(known, provider)) rows.push_back(providerRow(known, provider, now, calendar));
    return rows;
}

std::vector<QuietProvider> quietProviders(const ProvidersKnown& known) {
    std::vector<QuietProvider> quiet;
    for (const ProviderID provider : known.providers) {
        if (!isQuiet(known, provider)) continue;
        const bool isPresent = std::ranges::count(known.present, provider) > 0;
        const char* words = !isPresent                     ? " was not found"
                            : provider == ProviderID::grok ? " publishes no limits"
                                                           : " has no usage data yet";
        quiet.push_back({text(rawValue(provider)), text(displayName(provider)) + words});
    }
    return quiet;
}

} // namespace tokwatch
