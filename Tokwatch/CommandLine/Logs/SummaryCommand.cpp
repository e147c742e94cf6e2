#include "Tokwatch/CommandLine/Logs/LogCommands.h"

#include "Tokwatch/CommandLine/Logs/IndexCommand.h"
#include "Tokwatch/CommandLine/Terminal/Table.h"
#include "Tokwatch/CommandLine/Terminal/UsageBar.h"
#include "Tokwatch/CommandLine/Terminal/VersionedJson.h"
#include "Tokwatch/Display/DayFormat.h"
#include "Tokwatch/Display/SummaryDisplay.h"
#include "Tokwatch/Display/SummaryTexts.h"
#include "TokwatchCore/Presentation/MeterFormat.h"
#include "TokwatchCore/Support/Amounts.h"

#include <algorithm>

namespace tokwatch {
namespace {

/// A model name longer than this would push the numbers out of sight.
constexpr std::size_t longestName = 40;

double largestShare(const std::vector<SummaryDisplay::Row>& rows) {
    double largest = 0;
    for (const SummaryDisplay::Row& row : rows)
        largest = std::max(largest, row.shareFraction);
    return largest;
}

class SummaryPrinter {
  public:
    SummaryPrinter(const CommandSurroundings& given, const UsageSummary& s,
                   const SummaryOptions& options)
        : surroundings(given), terminal(given.terminal), summary(s), unit(options.unit),
          areLogsRead(!options.skipIndex) {}

    void print(std::optional<SummaryTable> only) {
        if (summary.tools.empty()) {
            printEmpty();
            return;
        }
        printHeadline();
        if (!only || *only == SummaryTable::tool) printTools();
        if (!only || *only == SummaryTable::model)
            printBreakdown(SummaryDisplay::modelRows(summary, unit), "Model");
        if (!only || *only == SummaryTable::day)
            printBreakdown(SummaryDisplay::dayRows(summary, unit, surroundings.calendar()), "Day");
        if (summary.hasUnknownPrices) {
            terminal.line();
            terminal.line(terminal.paint(Tone::dim, SummaryTexts::excludesUnknownPrices));
        }
    }

  private:
    void printEmpty() {
        terminal.line(SummaryTexts::noUsage(summary.days));
        terminal.line();
        if (!areLogsRead) {
            terminal.line("The logs were not read: with --no-index what is stored counts.");
            return;
        }
        terminal.line("Looked in:");
        const ProviderLocations places = surroundings.locations();
        Table table({{"Tool"}, {"Path"}, {""}});
        for (const ProviderID provider : allCases<ProviderID>) {
            for (const std::filesystem::path& path : places.logRoots(provider)) {
                std::error_code ignored;
                const bool found = std::filesystem::exists(path, ignored);
                table.add({{std::string(displayName(provider))},
                           {fitted(path.string(), 200)},
                           {found ? "nothing in these days" : "not found", Tone::dim}});
            }
        }
        table.print(terminal);
    }

    void printHeadline() {
        const std::string cost =
            MeterFormat::money(summary.totalCostUSD) + std::string(SummaryTexts::estimateSuffix);
        const std::string tokens = MeterFormat::tokens(summary.tokens.total()) + " tokens";
        const bool costFirst = unit == SummaryUnit::cost;
        terminal.line(terminal.paint(Tone::bold, SummaryTexts::period(summary.days) + "  " +
                                                     (costFirst ? cost : tokens)));
        terminal.line(terminal.paint(
            Tone::dim, (costFirst ? tokens : cost) + " · " + counted(summary.sessions, "session") +
                           " · cache savings " + MeterFormat::money(summary.cacheSavingsUSD)));
    }

    void printTools() {
        enum Column : std::size_t { atSessions = 1, atBar = 5 };
        Table table({{"Tool"},
                     {"Sessions", Align::right},
                     {"Tokens", Align::right},
                     {"Cost", Align::right},
                     {"Share", Align::right},
                     {""}},
                    {atBar, atSessions});
        const auto share = [this](const UsageSummary::Tool& tool) {
            return unit == SummaryUnit::cost ? tool.costShare : tool.tokenShare;
        };
        double largest = 0;
        for (const UsageSummary::Tool& tool : summary.tools)
            largest = std::max(largest, share(tool));
        for (const UsageSummary::Tool& tool : summary.tools) {
            table.add({{std::string(displayName(tool.provider)), Tone::bold},
                       {std::to_string(tool.sessions)},
                       {MeterFormat::tokens(tool.tokens)},
                       {(tool.approximate ? "~" : "") + MeterFormat::money(tool.costUSD)},
                       {MeterFormat::share(share(tool))},
                       {usageBar(share(tool), largest), usageTone(tool.provider)}});
        }
        terminal.line();
        table.print(terminal);
    }

    void printBreakdown(const std::vector<SummaryDisplay::Row>& rows, const char* title) {
        if (rows.empty()) return;
        constexpr std::size_t atBar = 4;
        Table table({{title, Align::left, Cut::end, 16},
                     {"Tokens", Align::right},
                     {"Cost", Align::right},
                     {"Share", Align::right},
                     {""}},
                    {atBar});
        const double largest = largestShare(rows);
        for (const SummaryDisplay::Row& row : rows) {
            table.add({{fitted(row.title, longestName), Tone::bold},
                       {row.tokens},
                       {row.cost},
                       {row.share},
                       {usageBar(row.shareFraction, largest), usageTone(row.provider)}});
        }
        terminal.line();
        table.print(terminal);
    }

    const CommandSurroundings& surroundings;
    Terminal& terminal;
    const UsageSummary& summary;
    SummaryUnit unit;
    bool areLogsRead;
};

} // namespace

int LogCommands::run(const CommandSurroundings& surroundings, const SummaryOptions& options) {
    surroundings.requireHome();
    const std::shared_ptr<UsageStore> store =
        options.skipIndex ? surroundings.openStoreForReading() : surroundings.openStore();
    if (!options.skipIndex) runIndexPass(surroundings, store);
    UsageSummary summary;
    try {
        summary = store->summary(options.days, surroundings.now(), surroundings.calendar(),
                                 PriceTable::bundled());
    } catch (const UsageStoreError& error) {
        throw CommandError(std::string("reading the usage store failed: ") + error.what());
    }
    if (surroundings.json) {
        surroundings.terminal.line(jsonText(versioned(encode(summary, DateCoding::iso8601))));
    } else {
        SummaryPrinter(surroundings, summary, options).print(options.by);
    }
    return exitOk;
}

} // namespace tokwatch
