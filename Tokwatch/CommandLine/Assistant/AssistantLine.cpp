#include "Tokwatch/CommandLine/Assistant/AssistantLine.h"

#include "Tokwatch/CommandLine/Terminal/SeverityTone.h"
#include "Tokwatch/Display/Severity.h"
#include "TokwatchCore/Presentation/LimitAge.h"
#include "TokwatchCore/Presentation/LimitBarModel.h"
#include "TokwatchCore/Presentation/MeterFormat.h"
#include "TokwatchCore/Presentation/WindowLabel.h"
#include "TokwatchCore/Records/ClaudeWindows.h"
#include "TokwatchCore/Support/ApplicationVersion.h"

#include <algorithm>

namespace tokwatch {
namespace {

class LineWriter {
  public:
    LineWriter(const AssistantFacts& f, const PlainSettings& s, const Terminal& t, Date n)
        : facts(f), settings(s), terminal(t), now(n) {}

    /// Empty where nothing is known of it.
    std::string text(LinePart part) const {
        const SessionStatus* status = facts.status ? &*facts.status : nullptr;
        switch (part) {
        case LinePart::model:
            return status ? terminal.paint(Tone::bold, status->model) : "";
        case LinePart::context:
            return status && status->contextUsed ? "context " + percent(*status->contextUsed) : "";
        case LinePart::cost:
            return status && status->costUSD ? MeterFormat::money(status->costUSD) : "";
        case LinePart::session:
            return limit(ClaudeWindows::sessionID);
        case LinePart::week:
            return limit(ClaudeWindows::weeklyID);
        case LinePart::today:
            return facts.today ? "today " + facts.today->text(settings.summaryUnit) : "";
        }
        return {};
    }

  private:
    static std::string percent(double fraction) {
        return std::to_string(static_cast<int>(wholePercent(fraction))) + "%";
    }

    /// "Session 58% left (2h 10m)"
    std::string limit(std::string_view id) const {
        const LimitWindow* window = facts.limits ? facts.limits->windowWithID(id) : nullptr;
        if (window == nullptr) return {};
        const LimitBarModel bar(*window, now);
        std::string text = windowLabel(*window) + ' ' + bar.percentLeftText + " left";
        if (bar.resetText) text += " (" + *bar.resetText + ')';
        return terminal.paint(toneOf(*window, bar), text);
    }

    Tone toneOf(const LimitWindow& window, const LimitBarModel& bar) const {
        if (LimitAge::isOld(window, facts.limits->fetchedAt, now)) return Tone::dim;
        return severityTone(severityOf(bar.leftFraction, settings.thresholds.warning,
                                       settings.thresholds.critical));
    }

    const AssistantFacts& facts;
    const PlainSettings& settings;
    const Terminal& terminal;
    Date now;
};

} // namespace

std::string assistantLine(const AssistantFacts& facts, const std::vector<LinePart>& parts,
                          const PlainSettings& settings, const Terminal& terminal, Date now) {
    const LineWriter writer(facts, settings, terminal, now);
    std::string line;
    // Who looks at the line is to see that it is ours that was not understood.
    if (!facts.status) line = applicationName;
    for (const LinePart part : parts) {
        const std::string text = writer.text(part);
        if (!text.empty()) line.append(line.empty() ? "" : " · ").append(text);
    }
    return line.empty() ? std::string(applicationName) : line;
}

Json assistantJson(const AssistantFacts& facts) {
    Json json = Json::object();
    if (facts.status) {
        if (!facts.status->model.empty()) json["model"] = facts.status->model;
        if (facts.status->contextUsed) json["contextUsedFraction"] = *facts.status->contextUsed;
        if (facts.status->costUSD) json["sessionCostUSD"] = *facts.status->costUSD;
    }
    if (facts.limits) json["limits"] = encode(*facts.limits, DateCoding::iso8601);
    if (facts.today) {
        json["todayCostUSD"] = facts.today->costUSD;
        json["todayTokens"] = facts.today->tokens;
    }
    return json;
}

} // namespace tokwatch
