#include "Tokwatch/CommandLine/Logs/LogCommands.h"
#include "Tokwatch/CommandLine/Logs/LogReadings.h"
#include "Tokwatch/CommandLine/Logs/ReportFormats.h"
#include "Tokwatch/CommandLine/Logs/ReportPrinter.h"
#include "Tokwatch/CommandLine/Terminal/VersionedJson.h"
#include "Tokwatch/Display/DayFormat.h"
#include "Tokwatch/Display/SummaryTexts.h"
#include "TokwatchCore/Support/Amounts.h"

namespace tokwatch {
namespace {

constexpr std::int64_t defaultDays = 30;

/// The days that a report is of, and how they are called.
struct ReportWindow {
    Period period;
    std::string title; ///< "Last 30 days"
    std::string empty; ///< what is said where they have no usage
};

Period dayOf(const std::string& option, const std::string& key, const Calendar& calendar) {
    const std::optional<Period> day = dayNamed(key, calendar);
    if (!day)
        throw UsageError(option + " " + key +
                         " is no day of the calendar; days are written 2026-01-31");
    return *day;
}

std::string dayText(Date day, Date now, const Calendar& calendar) {
    const int year = calendar.fields(day).year;
    return DayFormat::day(day, calendar) +
           (year == calendar.fields(now).year ? "" : ", " + std::to_string(year));
}

ReportWindow daysUntilToday(std::int64_t days, Date now, const Calendar& calendar) {
    return {lastDays(static_cast<int>(days), now, calendar), SummaryTexts::period(days),
            SummaryTexts::noUsage(days)};
}

ReportWindow windowOf(const ReportOptions& options, Date now, const Calendar& calendar) {
    if (options.days && (options.since || options.until))
        throw UsageError("--days and --since or --until exclude each other");
    if (!options.since) {
        if (options.until) throw UsageError("--until needs --since");
        return daysUntilToday(options.days.value_or(defaultDays), now, calendar);
    }
    const Period first = dayOf("--since", *options.since, calendar);
    const Period last =
        options.until ? dayOf("--until", *options.until, calendar) : dayHolding(now, calendar);
    if (last.start < first.start)
        throw UsageError(options.until ? "--until lies before --since"
                                       : "--since lies in the future");
    const std::string title = dayText(first.start, now, calendar) +
                              (first == last ? "" : " – " + dayText(last.start, now, calendar));
    return {{first.start, last.end}, title, "No usage: " + title};
}

Json jsonOf(const UsageReport& report, const LogReading& reading) {
    Json json = reportJson(report);
    putUnread(json, reading);
    return json;
}

} // namespace

int LogCommands::run(const CommandSurroundings& surroundings, const ReportOptions& options) {
    if (surroundings.json && options.csv) throw UsageError("--json and --csv exclude each other");
    const Calendar calendar = surroundings.calendar();
    const Date now = surroundings.now();
    const ReportWindow window = windowOf(options, now, calendar);
    surroundings.requireHome();

    const UsageReport::Query query{options.by, window.period, surroundings.paths.home.string()};
    const Period reach = UsageReport::reach(query);
    const LogReading reading = readLogs(surroundings, options.provider, reach.start);
    const CountedResponses responses(reading, reach.start, reach.end);
    const UsageReport report =
        UsageReport::make(query, responses, PriceTable::bundled(), calendar, now);
    Terminal& terminal = surroundings.terminal;
    if (surroundings.json) {
        terminal.line(jsonText(versioned(jsonOf(report, reading))));
    } else if (options.csv) {
        terminal.write(reportCSV(report));
    } else {
        if (report.rows.empty()) {
            terminal.line(window.empty);
        } else {
            printReport(surroundings, report, window.title);
        }
        printUnread(surroundings, reading);
    }
    requireWhole(surroundings, reading);
    return exitOk;
}

} // namespace tokwatch
