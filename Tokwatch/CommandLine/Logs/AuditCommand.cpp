#include "Tokwatch/CommandLine/Logs/LogCommands.h"
#include "Tokwatch/CommandLine/Logs/LogReadings.h"
#include "Tokwatch/CommandLine/Terminal/Table.h"
#include "Tokwatch/CommandLine/Terminal/VersionedJson.h"
#include "Tokwatch/Display/HomeRelative.h"
#include "Tokwatch/Report/LogAudit.h"
#include "TokwatchCore/Records/RecordFields.h"
#include "TokwatchCore/Store/Pruning.h"
#include "TokwatchCore/Support/Amounts.h"
#include "TokwatchCore/Support/CheckedArithmetic.h"

#include <algorithm>

namespace tokwatch {
namespace {

/// How many differing days and models are shown unless all are asked for.
constexpr std::size_t mostRows = 40;

std::string_view textOf(AuditReason reason) {
    switch (reason) {
    case AuditReason::notReadYet:
        return "not read yet";
    case AuditReason::deleted:
        return "too old for the store, deleted there";
    case AuditReason::otherDay:
        return "counted on another day";
    case AuditReason::earlierLine:
        return "counted by an earlier line";
    case AuditReason::gone:
        return "from files that are gone";
    case AuditReason::unexplained:
        return "unexplained";
    }
    return {};
}

/// What is said of lines that count for nothing and might have; none of the other verdicts.
std::string_view skippedText(LineVerdict verdict) {
    switch (verdict) {
    case LineVerdict::cut:
        return "cut or glued";
    case LineVerdict::noTime:
        return "without a time";
    case LineVerdict::noUsage:
        return "without usage";
    case LineVerdict::synthetic:
        return "synthetic";
    case LineVerdict::unknownForm:
        return "of unknown form";
    case LineVerdict::counted:
    case LineVerdict::other:
    case LineVerdict::cumulative:
        break;
    }
    return {};
}

std::int64_t skipped(const LineTally& lines) {
    std::int64_t sum = 0;
    for (const LineVerdict verdict : allCases<LineVerdict>)
        if (!skippedText(verdict).empty()) sum += lines.of(verdict);
    return sum;
}

/// "1,234,567"
std::string grouped(std::int64_t number) {
    std::string digits = std::to_string(number);
    const std::size_t first = number < 0 ? 1 : 0;
    for (std::size_t at = digits.size(); at > first + 3;)
        digits.insert(at -= 3, ",");
    return digits;
}

Json jsonOf(const LogAudit& audit, const LogReading& reading) {
    Json json = Json::object();
    json["explained"] = audit.isExplained();
    Json& groups = json["groups"] = Json::array();
    for (const LogAudit::Group& group : audit.groups) {
        Json& lines = groups.emplace_back(Json::object());
        lines["provider"] = encode(group.provider);
        lines["root"] = group.root;
        lines["agents"] = group.isOfAgents;
        lines["files"] = group.files;
        lines["lines"] = group.lines.total();
        for (const LineVerdict verdict : allCases<LineVerdict>)
            lines[std::string(rawValue(verdict))] = group.lines.of(verdict);
        lines["unended"] = group.lines.unended;
        lines["responses"] = group.responses;
        lines["repeated"] = group.repeated;
        lines["cumulativeOnlyFiles"] = group.cumulativeOnly;
    }
    Json& rows = json["rows"] = Json::array();
    for (const auto& [key, row] : audit.rows) {
        Json& one = rows.emplace_back(Json::object());
        one["provider"] = encode(key.provider);
        one["model"] = key.model;
        one["day"] = key.day;
        one["stored"] = encode(row.stored);
        one["inFiles"] = encode(row.inFiles);
        Json& differences = one["differences"] = Json::object();
        for (const auto& [reason, tokens] : row.differences)
            differences[std::string(rawValue(reason))] = encode(tokens);
    }
    putUnread(json, reading);
    return json;
}

class AuditPrinter {
  public:
    AuditPrinter(const CommandSurroundings& given, const LogAudit& a)
        : terminal(given.terminal), home(given.paths.home.native()), audit(a) {}

    void print(AuditRows which) {
        printGroups();
        terminal.line();
        const std::int64_t all = std::ssize(audit.rows);
        const std::int64_t differing = std::ranges::count_if(
            audit.rows, [](const auto& row) { return !row.second.differences.empty(); });
        if (all == 0) {
            terminal.line("Neither the files nor the store have any usage");
            return;
        }
        terminal.line(terminal.paint(
            Tone::bold, differing == 0
                            ? "The store agrees with the files on each day and model"
                            : "The store differs from the files on " + std::to_string(differing) +
                                  " of " + std::to_string(all) + " days and models"));
        printReasons();
        printRows(which);
    }

  private:
    std::string nameOf(const LogAudit::Group& group) const {
        return homeRelative(group.root, home) + (group.isOfAgents ? ", agents" : "");
    }

    void printGroups() {
        Table table({{"Where", Align::left, Cut::end},
                     {"Files", Align::right},
                     {"Lines", Align::right},
                     {"Responses", Align::right},
                     {"Repeated", Align::right},
                     {"Skipped", Align::right}});
        for (const LogAudit::Group& group : audit.groups)
            table.add({{nameOf(group), Tone::bold},
                       {grouped(group.files)},
                       {grouped(group.lines.total())},
                       {grouped(group.responses)},
                       {grouped(group.repeated)},
                       {grouped(skipped(group.lines))}});
        if (!table.isEmpty()) table.print(terminal);
        for (const LogAudit::Group& group : audit.groups)
            printNotes(group);
    }

    void printNotes(const LogAudit::Group& group) {
        std::string reasons;
        for (const LineVerdict verdict : allCases<LineVerdict>) {
            const std::int64_t count = group.lines.of(verdict);
            if (count == 0 || skippedText(verdict).empty()) continue;
            reasons.append(reasons.empty() ? "" : ", ").append(grouped(count)).append(" ");
            reasons.append(skippedText(verdict));
        }
        if (!reasons.empty()) note("Skipped in " + nameOf(group) + ": " + reasons);
        if (group.lines.unended > 0)
            note(counted(group.lines.unended, "file") + " in " + nameOf(group) +
                 " end within a line, which counts once it is whole");
        if (group.cumulativeOnly > 0)
            note(counted(group.cumulativeOnly, "file") + " in " + nameOf(group) +
                 " with running totals alone, as older versions wrote them: not read");
    }

    void note(const std::string& text) { terminal.line(terminal.paint(Tone::dim, text)); }

    /// What all differences come to: somebody who never indexed has one on each day.
    void printReasons() {
        std::map<AuditReason, std::int64_t> totals;
        for (const auto& [key, row] : audit.rows)
            for (const auto& [reason, tokens] : row.differences)
                totals[reason] = checkedAdd(totals[reason], tokens.total());
        for (const auto& [reason, total] : totals)
            note(differenceText(reason, total));
    }

    static std::string differenceText(AuditReason reason, std::int64_t tokens) {
        return (tokens > 0 ? "+" : "") + grouped(tokens) + " " + std::string(textOf(reason));
    }

    void printRows(AuditRows which) {
        Table table({{"Day"},
                     {"Model", Align::left, Cut::end},
                     {"Store", Align::right},
                     {"Files", Align::right},
                     {"Why"}});
        std::vector<std::pair<LogAudit::Key, LogAudit::Row>> newestFirst(audit.rows.begin(),
                                                                         audit.rows.end());
        std::ranges::stable_sort(newestFirst, std::ranges::greater(),
                                 [](const auto& row) { return row.first.day; });
        std::size_t shown = 0;
        for (const auto& [key, row] : newestFirst) {
            if (row.differences.empty() && which == AuditRows::differing) continue;
            if (++shown > mostRows && which == AuditRows::differing) continue;
            std::vector<Table::Cell> line{{key.day},
                                          {key.model, Tone::bold},
                                          {grouped(row.stored.total())},
                                          {grouped(row.inFiles.total())}};
            if (row.differences.empty()) table.add(line);
            for (const auto& [reason, tokens] : row.differences) {
                line.push_back({differenceText(reason, tokens.total()),
                                reason == AuditReason::unexplained ? Tone::red : Tone::plain});
                table.add(line);
                line = {{""}, {""}, {""}, {""}};
            }
        }
        if (table.isEmpty()) return;
        terminal.line();
        table.print(terminal);
        if (which == AuditRows::differing && shown > mostRows)
            note("and " + std::to_string(shown - mostRows) + " more; --all shows them");
    }

    Terminal& terminal;
    const std::string& home;
    const LogAudit& audit;
};

LogAudit::Stored storedIn(const std::optional<std::filesystem::path>& database) {
    std::error_code none;
    if (!database || !std::filesystem::exists(*database, none)) return {};
    try {
        StoredAccounts accounts(*database);
        return LogAudit::Stored(accounts);
    } catch (const UsageStoreError& error) {
        throw CommandError("reading the usage store " + database->string() +
                           " failed: " + error.what());
    }
}

std::string deletedBefore(const LogAudit::Stored& stored, Date now, const Calendar& calendar) {
    std::optional<std::string> newest;
    for (const DailyRow& row : stored.rows)
        newest = std::max(newest, std::optional(row.day));
    return calendar.dayKey(pruneLimit(now, newest, calendar));
}

struct Examined {
    LogReading reading;
    LogAudit audit;
};

Examined examine(const CommandSurroundings& surroundings) {
    const Calendar calendar = surroundings.calendar();
    // Before the files: what is stored meanwhile is in them and only seems not to have been read.
    const LogAudit::Stored stored = storedIn(surroundings.paths.database());
    LogReading reading =
        readLogs(surroundings, std::nullopt, dateFromUnixSeconds(0), KeepLines::all);
    LogAudit audit = LogAudit::make(reading, stored, calendar,
                                    deletedBefore(stored, surroundings.now(), calendar));
    return {std::move(reading), std::move(audit)};
}

} // namespace

int LogCommands::run(const CommandSurroundings& surroundings, const AuditOptions& options) {
    surroundings.requireHome();
    Examined examined = examine(surroundings);
    // Files and store are looked at one after the other; what was written between is no riddle at
    // a second look.
    if (!examined.audit.isExplained()) examined = examine(surroundings);
    const auto& [reading, audit] = examined;
    if (surroundings.json) {
        surroundings.terminal.line(jsonText(versioned(jsonOf(audit, reading))));
    } else {
        AuditPrinter(surroundings, audit).print(options.rows);
        printUnread(surroundings, reading);
    }
    requireWhole(surroundings, reading);
    if (!audit.isExplained()) throw CommandError("some differences are unexplained");
    return exitOk;
}

} // namespace tokwatch
