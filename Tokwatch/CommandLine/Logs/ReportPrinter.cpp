#include "Tokwatch/CommandLine/Logs/ReportPrinter.h"

#include "Tokwatch/CommandLine/Terminal/Table.h"
#include "Tokwatch/CommandLine/Terminal/UsageBar.h"
#include "Tokwatch/Display/DayFormat.h"
#include "Tokwatch/Display/HomeRelative.h"
#include "Tokwatch/Display/SummaryDisplay.h"
#include "Tokwatch/Display/SummaryTexts.h"
#include "TokwatchCore/Presentation/MeterFormat.h"
#include "TokwatchCore/Support/Amounts.h"

#include <algorithm>

namespace tokwatch {
namespace {

/// From this width on, sessions are named by their whole identifiers, to be copied; below it by as
/// much as tells a person's from each other.
constexpr std::size_t columnsForIdentifiers = 110;
constexpr std::size_t shortIdentifier = 8;
constexpr std::size_t longestIdentifier = 40;

std::string costText(const UsageSums& sums) {
    return (sums.costUSD && sums.approximate ? "~" : "") + MeterFormat::money(sums.costUSD);
}

/// "claude-opus-4-5 +2"
std::string modelsText(const UsageSums& sums) {
    if (sums.models.empty()) return {};
    const std::size_t others = sums.models.size() - 1;
    return shownName(sums.models.front()) + (others == 0 ? "" : " +" + std::to_string(others));
}

class ReportPrinter {
  public:
    ReportPrinter(const CommandSurroundings& given, const UsageReport& r)
        : surroundings(given), terminal(given.terminal), report(r), calendar(given.calendar()),
          now(given.now()) {}

    void print(const std::string& window) {
        const UsageSums& total = report.total;
        terminal.line(terminal.paint(Tone::bold, window + "  " +
                                                     MeterFormat::money(total.costUSD.value_or(0)) +
                                                     std::string(SummaryTexts::estimateSuffix)));
        terminal.line(
            terminal.paint(Tone::dim, MeterFormat::tokens(total.tokens.total()) + " tokens · " +
                                          counted(total.sessions, "session") + subjects()));
        terminal.line();
        if (report.query.by == ReportBy::session) {
            printSessions();
        } else {
            printShares();
        }
        printRunning();
        if (total.hasUnknownPrices) {
            terminal.line();
            terminal.line(terminal.paint(Tone::dim, SummaryTexts::excludesUnknownPrices));
        }
    }

    void printRunning() {
        const auto running = std::ranges::find_if(
            report.rows, [](const ReportRow& row) { return row.pace.has_value(); });
        if (running != report.rows.end()) printPace(*running);
    }

  private:
    /// " · 5 projects"; nothing where the line has the number already.
    std::string subjects() const {
        if (report.query.by == ReportBy::session) return {};
        return " · " + counted(std::ssize(report.rows), rawValue(report.query.by));
    }

    std::string projectText(const ReportRow& row, const char* unknown) const {
        if (row.project.empty()) return unknown;
        return homeRelative(row.project, surroundings.paths.home.native());
    }

    std::string spanText(Date start, Date end) const {
        return DayFormat::moment(start, now, calendar) + " – " +
               DayFormat::moment(end, start, calendar);
    }

    std::string titleOf(const ReportRow& row) const {
        switch (report.query.by) {
        case ReportBy::project:
        case ReportBy::session:
            return projectText(row, "no directory stated");
        case ReportBy::model:
            return shownName(row.model);
        case ReportBy::hour:
            return DayFormat::weekdayAndDay(row.period->start, calendar) + ", " +
                   DayFormat::clock(row.period->start, calendar);
        case ReportBy::day:
            return DayFormat::weekdayAndDay(row.period->start, calendar);
        case ReportBy::week:
            return DayFormat::day(row.period->start, calendar) + " – " +
                   DayFormat::day(calendar.addingDays(row.period->start, 6), calendar);
        case ReportBy::month:
            return DayFormat::month(row.period->start, calendar);
        case ReportBy::block:
            return DayFormat::weekdayAndDay(row.period->start, calendar) + ", " +
                   DayFormat::clock(row.period->start, calendar) + " – " +
                   DayFormat::clock(row.period->end, calendar);
        }
        return {};
    }

    std::string columnTitle() const {
        std::string title(rawValue(report.query.by));
        title.front() = static_cast<char>(title.front() - 'a' + 'A');
        return title;
    }

    double shareOf(const ReportRow& row) const {
        const double whole = report.total.costUSD.value_or(0);
        return whole > 0 ? std::min(1.0, row.sums.costUSD.value_or(0) / whole) : 0;
    }

    void printShares() {
        const bool isProject = report.query.by == ReportBy::project;
        std::optional<Cut> cut;
        if (isProject) cut = Cut::start;
        if (report.query.by == ReportBy::model) cut = Cut::end;
        constexpr std::size_t atSessions = 1;
        constexpr std::size_t atBar = 5;
        Table table({{columnTitle(), Align::left, cut, 16},
                     {"Sessions", Align::right},
                     {"Tokens", Align::right},
                     {"Cost", Align::right},
                     {"Share", Align::right},
                     {""}},
                    {atBar, atSessions});
        double largest = 0;
        for (const ReportRow& row : report.rows)
            largest = std::max(largest, shareOf(row));
        for (std::size_t i = 0; i < report.rows.size(); ++i) {
            const ReportRow& row = report.rows[i];
            if (report.query.by == ReportBy::block && i > 0)
                addGap(table, row.period->end, report.rows[i - 1].period->start);
            table.add({{titleOf(row), Tone::bold},
                       {std::to_string(row.sums.sessions)},
                       {MeterFormat::tokens(row.sums.tokens.total())},
                       {costText(row.sums)},
                       {row.sums.costUSD ? MeterFormat::share(shareOf(row)) : "—"},
                       {usageBar(shareOf(row), largest), usageTone(row.provider)}});
        }
        table.print(terminal);
    }

    static void addGap(Table& table, Date end, Date start) {
        if (start > end)
            table.add({{"  no usage for " + MeterFormat::duration(Seconds(start - end).count()),
                        Tone::dim}});
    }

    void printSessions() {
        Table table({{"Session"},
                     {"Project", Align::left, Cut::start},
                     {"Time"},
                     {"Models", Align::left, Cut::end},
                     {"Tokens", Align::right},
                     {"Cost", Align::right}});
        const bool isWide =
            terminal.columns().value_or(columnsForIdentifiers) >= columnsForIdentifiers;
        for (const ReportRow& row : report.rows) {
            const std::string id =
                fitted(row.session.substr(0, isWide ? row.session.size() : shortIdentifier),
                       longestIdentifier);
            table.add({{id.empty() ? "—" : id, Tone::bold},
                       {projectText(row, "—")},
                       {spanText(row.sums.first, row.sums.last), Tone::dim},
                       {modelsText(row.sums)},
                       {MeterFormat::tokens(row.sums.tokens.total())},
                       {costText(row.sums)}});
        }
        table.print(terminal);
    }

    void printPace(const ReportRow& block) {
        const BlockPace& pace = *block.pace;
        const auto tokens = [](double count) {
            return MeterFormat::tokens(static_cast<std::int64_t>(count));
        };
        const auto cost = [](std::optional<double> usd) {
            return usd ? " and " + MeterFormat::money(usd) : std::string();
        };
        terminal.line();
        terminal.line("Running until " + DayFormat::clock(block.period->end, calendar) + ", " +
                      MeterFormat::duration(Seconds(block.period->end - now).count()) +
                      " left: " + tokens(pace.tokensPerMinute) + " tokens" +
                      cost(pace.usdPerMinute) + " a minute.");
        terminal.line("At this pace " + tokens(pace.projectedTokens) + " tokens" +
                      cost(pace.projectedUSD) + " by then.");
    }

    const CommandSurroundings& surroundings;
    Terminal& terminal;
    const UsageReport& report;
    const Calendar calendar;
    const Date now;
};

} // namespace

void printReport(const CommandSurroundings& surroundings, const UsageReport& report,
                 const std::string& window) {
    ReportPrinter(surroundings, report).print(window);
}

void printRunningBlock(const CommandSurroundings& surroundings, const UsageReport& report) {
    ReportPrinter(surroundings, report).printRunning();
}

} // namespace tokwatch
