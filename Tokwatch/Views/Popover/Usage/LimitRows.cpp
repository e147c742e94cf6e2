#include "Tokwatch/Views/Popover/Usage/LimitRows.h"

#include "Tokwatch/Display/DayFormat.h"
#include "Tokwatch/Display/Severity.h"
#include "Tokwatch/Pictures/MeterColors.h"
#include "Tokwatch/Views/Common/Text.h"
#include "TokwatchCore/Presentation/LimitAge.h"
#include "TokwatchCore/Presentation/LimitBarModel.h"
#include "TokwatchCore/Presentation/WindowLabel.h"
#include "TokwatchCore/Support/PlainText.h"

#include <algorithm>

namespace tokwatch {
namespace {

/// What its history tells of a limit.
void addHistory(LimitRow& row, const LimitWindow& window, const ProviderLimits& limits,
                const WindowSamples& samples, Date now, const Calendar& calendar) {
    const auto own = samples.find(window.id);
    if (own == samples.end()) return;
    const std::optional<BurnUp> course = burnUp(window, limits.fetchedAt, own->second, now);
    if (!course) return;
    const std::optional<Forecast> said = forecast(*course, now);
    row.burnUp = BurnUpLine::of(*course, said, now, calendar);
    if (said && said->usedUpAt)
        row.runOutText = sentence(LimitTexts::runOut(*said->usedUpAt, now, calendar));
}

LimitRow limitRow(const LimitWindow& window, const ProviderLimits& limits,
                  const LimitJudgement& judgement, const WindowSamples& samples, Date now,
                  const Calendar& calendar) {
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
    row.paceText = text(LimitTexts::pace(bar));
    row.leftFraction = std::clamp(bar.leftFraction, 0.0, 1.0);
    row.timeLeftFraction = bar.timeLeftFraction.value_or(-1);
    row.timeText = text(LimitTexts::timeMark(bar));
    row.level = static_cast<Level::Value>(
        severityOf(bar.leftFraction, judgement.warningThreshold, judgement.criticalThreshold));
    row.isAhead = pace == Pace::over;
    row.isOld = LimitAge::isOld(window, limits.fetchedAt, now);
    addHistory(row, window, limits, samples, now, calendar);
    QStringList parts{row.label + " " + row.leftText + " left"};
    for (const QString& part : {row.resetText, row.paceCaption, row.runOutText})
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

WindowSamples samplesOf(const ProvidersKnown& known, ProviderID provider) {
    const auto found = known.samples.find(provider);
    return found == known.samples.end() ? WindowSamples() : found->second;
}

AttemptTimes attemptsOf(const ProvidersKnown& known, ProviderID provider) {
    const auto found = known.attempts.find(provider);
    return found == known.attempts.end() ? AttemptTimes() : found->second;
}

/// Whether nobody can expect numbers of the provider.
bool isQuiet(const ProvidersKnown& known, ProviderID provider) {
    const ProviderLimits* limits = limitsOf(known.limits, provider);
    if (limits != nullptr && (!limits->windows.empty() || limits->credits)) return false;
    return !traits(provider).publishesLimits || std::ranges::count(known.present, provider) == 0;
}

ProviderRow providerRow(const ProvidersKnown& known, ProviderID provider, Date now,
                        const Calendar& calendar) {
    ProviderRow row;
    row.id = text(rawValue(provider));
    row.name = text(displayName(provider));
    const ProviderLimits* limits = limitsOf(known.limits, provider);
    if (limits != nullptr) {
        row.plan = text(plainText(limits->plan.value_or("")));
        const WindowSamples samples = samplesOf(known, provider);
        for (const LimitWindow& window : limits->windows)
            row.windows.append(QVariant::fromValue(
                limitRow(window, *limits, known.judgement, samples, now, calendar)));
        if (limits->credits) {
            row.creditsText = sentence(LimitTexts::credits(*limits->credits));
            if (!row.creditsText.isEmpty())
                row.creditsLabel = text(plainText(limits->credits->label));
        }
        if (const std::optional<Date> asOf = oldest(*limits, now))
            row.asOfText = "As of " + text(DayFormat::moment(*asOf, now, calendar));
    }
    const AttemptTimes attempts = attemptsOf(known, provider);
    const bool isLive = known.judgement.claudeLiveLimits;
    const LimitNotice notice = limits != nullptr
                                   ? limitNotice(provider, *limits, isLive)
                                   : unknownLimitsNotice(provider, isLive, known.judgement.mayAsk);
    row.notice = text(notice.sentence);
    if (limits != nullptr && limits->status == ProviderStatus::rateLimited)
        row.notice += u' ' + text(LimitTexts::nextTry(attempts.nextFetch, now, calendar));
    row.noticeIsCalm = notice.isCalm;
    row.action = static_cast<ProviderAction::Value>(notice.remedy);
    const bool asksAgain =
        row.action == ProviderAction::Retry || row.action == ProviderAction::AllowAccess;
    if (asksAgain)
        row.tryText = attempts.isUnderWay
                          ? QStringLiteral("Trying…")
                          : sentence(LimitTexts::retry(attempts.lastAttempt, attempts.nextRetry,
                                                       now, calendar));
    return row;
}

MeterColors colorsOf(const LimitRow& row, const kivo::Palette& colors) {
    return meterColors(colors, static_cast<Severity>(row.level), row.isOld);
}

} // namespace

QColor LimitRow::fill(const kivo::Palette& colors) const {
    return colorsOf(*this, colors).fill;
}

QColor LimitRow::figure(const kivo::Palette& colors) const {
    return colorsOf(*this, colors).figure;
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
        quiet.push_back({text(rawValue(provider)), text(LimitTexts::quiet(provider, isPresent))});
    }
    return quiet;
}

} // namespace tokwatch

#include "moc_LimitRows.cpp"
