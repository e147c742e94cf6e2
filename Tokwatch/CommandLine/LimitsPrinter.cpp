#include "Tokwatch/CommandLine/LimitsPrinter.h"

#include "Tokwatch/CommandLine/Terminal/SeverityTone.h"
#include "Tokwatch/CommandLine/Terminal/Table.h"
#include "Tokwatch/CommandLine/Terminal/VersionedJson.h"
#include "Tokwatch/Display/DayFormat.h"
#include "Tokwatch/Display/LimitTexts.h"
#include "TokwatchCore/Presentation/LimitAge.h"
#include "TokwatchCore/Presentation/LimitBarModel.h"
#include "TokwatchCore/Presentation/WindowLabel.h"

#include <algorithm>

namespace tokwatch {
namespace {

constexpr std::size_t barColumns = 20;
constexpr std::size_t shortBarColumns = 10;
/// Labels and plans come from services.
constexpr std::size_t longestLabel = 40;
constexpr std::size_t shortLabel = 8;
/// How a sentence goes on that tells that live limits are off.
constexpr const char* turningOn = "; tokwatch preferences set claudeLiveLimits true turns them on.";

/// The columns from the left.
enum ColumnPlace : std::size_t { atLabel, atLeft, atBar, atReset, atPace, atAge };

class LimitsPrinter {
  public:
    LimitsPrinter(const CommandSurroundings& given, const PlainSettings& s, const RunOuts& r)
        : surroundings(given), settings(s), runOuts(r), now(given.now()) {}

    void add(ProviderID provider, const ProviderLimits& limits) {
        std::string heading(displayName(provider));
        if (limits.plan) heading += " · " + fitted(*limits.plan, longestLabel);
        table.add({{heading, Tone::bold}});
        for (const LimitWindow& window : limits.windows)
            addWindow(provider, window, limits.fetchedAt);
        if (limits.credits) addCredits(*limits.credits);
        LimitNotice notice = limitNotice(provider, limits, settings.claudeLiveLimits);
        if (notice.remedy == LimitNotice::Remedy::turnOnLiveLimits)
            notice.sentence.replace(notice.sentence.size() - 1, 1, turningOn);
        if (!notice.sentence.empty())
            table.add({{"  " + notice.sentence, notice.isCalm ? Tone::dim : Tone::yellow}});
    }

    void print() {
        if (table.isEmpty())
            surroundings.terminal.line("No limits are known yet.");
        else
            table.print(surroundings.terminal);
    }

  private:
    void addWindow(ProviderID provider, const LimitWindow& window, Date fetchedAt) {
        const LimitBarModel model(window, now);
        const std::string label = windowLabel(window);
        table.add(
            {{"  " + fitted(label, longestLabel), Tone::plain, {"  " + fitted(label, shortLabel)}},
             {model.percentLeftText + " left", toneOf(model.leftFraction)},
             {track(model.leftFraction, barColumns),
              toneOf(model.leftFraction),
              {track(model.leftFraction, shortBarColumns)}},
             {LimitTexts::reset(window, model, now, surroundings.calendar()),
              Tone::plain,
              {LimitTexts::shortReset(window, model, now)}},
             paceOf(provider, window, model),
             {ageText(window, fetchedAt), Tone::dim}});
    }

    /// How it goes, and where that leads; where there is little room, the latter alone.
    Table::Cell paceOf(ProviderID provider, const LimitWindow& window,
                       const LimitBarModel& model) const {
        std::string text(caption(model.pace));
        const std::string runOut = runOuts.text(provider, window.id);
        if (runOut.empty()) return {text, model.pace == Pace::over ? Tone::yellow : Tone::dim};
        const Tone tone = toneOf(model.leftFraction);
        return {text + (text.empty() ? "" : " · ") + runOut,
                tone == Tone::red ? Tone::red : Tone::yellow,
                {runOut}};
    }

    void addCredits(const Credits& credits) {
        const std::string text = LimitTexts::credits(credits);
        if (!text.empty()) table.add({{"  " + fitted(credits.label, longestLabel) + ": " + text}});
    }

    /// A bar as wide as the whole limit, so that what is gone can be seen.
    static std::string track(double left, std::size_t columns) {
        std::string filled = bar(left, columns);
        for (std::size_t width = displayWidth(filled); width < columns; ++width)
            filled += "·";
        return filled;
    }

    /// Of a number that is not of now: the moment that it is of.
    std::string ageText(const LimitWindow& window, Date fetchedAt) const {
        const bool isLive = std::holds_alternative<LimitSource::Live>(window.source.value);
        const Date moment = LimitAge::asOf(window, fetchedAt);
        if (isLive && std::chrono::abs(now - moment) < LimitAge::betweenFetches) return "";
        return "as of " + DayFormat::moment(moment, now, surroundings.calendar());
    }

    Tone toneOf(double left) const {
        return severityTone(
            severityOf(left, settings.thresholds.warning, settings.thresholds.critical));
    }

    const CommandSurroundings& surroundings;
    const PlainSettings& settings;
    const RunOuts& runOuts;
    Date now;
    Table table{{{""}, {"", Align::right}, {""}, {""}, {""}, {""}},
                {atBar, atBar, atPace, atAge, atReset, atLabel, atPace}};
};

/// The records, and in each window that runs out before its reset the moment when it does.
Json encodeAll(const LimitsByProvider& limits, const std::vector<ProviderID>& order,
               const RunOuts& runOuts) {
    Json json = Json::object();
    for (const ProviderID provider : order) {
        const ProviderLimits* known = limitsOf(limits, provider);
        if (known == nullptr) continue;
        Json& record = json[std::string(rawValue(provider))];
        record = encode(*known, DateCoding::iso8601);
        for (std::size_t at = 0; at < known->windows.size(); ++at)
            if (const auto moment = runOuts.moment(provider, known->windows[at].id))
                record["windows"][at]["runsOutAt"] = encode(*moment, DateCoding::iso8601);
    }
    return json;
}

} // namespace

void printLimits(const CommandSurroundings& surroundings, const PlainSettings& settings,
                 const LimitsByProvider& limits, const std::vector<ProviderID>& order,
                 const RunOuts& runOuts) {
    LimitsPrinter printer(surroundings, settings, runOuts);
    for (const ProviderID provider : order) {
        if (const ProviderLimits* known = limitsOf(limits, provider)) printer.add(provider, *known);
    }
    printer.print();
}

std::vector<ProviderID> providersAsked(const PlainSettings& settings,
                                       std::optional<ProviderID> only) {
    return only ? std::vector{*only} : settings.enabledProviders;
}

void showLimits(const CommandSurroundings& surroundings, const PlainSettings& settings,
                const LimitsByProvider& limits, const std::vector<ProviderID>& order) {
    const RunOuts runOuts = surroundings.runOuts(limits);
    if (surroundings.json)
        surroundings.terminal.line(jsonText(versioned(encodeAll(limits, order, runOuts))));
    else
        printLimits(surroundings, settings, limits, order, runOuts);
}

} // namespace tokwatch
