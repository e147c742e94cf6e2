#include "Tokwatch/CommandLine/IndexCommand.h"

#include "Tokwatch/CommandLine/ProgressBar.h"
#include "Tokwatch/CommandLine/Table.h"
#include "TokwatchCore/Records/RecordCoding.h"
#include "TokwatchCore/Support/ByteFormat.h"

#include <chrono>
#include <cstdio>

namespace tokwatch {
namespace {

Json encode(const IndexReport& report) {
    Json json = Json::object();
    json["newEvents"] = report.outcome.newEvents;
    json["codexLimitsUpdated"] = report.outcome.codexLimitsUpdated;
    json["bytesRead"] = report.bytesRead();
    json["unreadableFiles"] = report.statistics.unreadableFiles;
    json["unreadableFolders"] = report.statistics.unreadableFolders;
    json["seconds"] = report.seconds;
    return json;
}

std::string secondsText(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f s", seconds);
    return text;
}

void print(Terminal& terminal, const IndexReport& report) {
    Table table(
        {{"Tool"}, {"New events", Align::right}, {"Read", Align::right}, {"Files", Align::right}});
    for (const IndexStatistics::Provider& provider : report.statistics.providers) {
        if (provider.files == 0) continue;
        table.add({{std::string(displayName(provider.provider)), Tone::bold},
                   {std::to_string(provider.newEvents)},
                   {formatBytes(provider.bytesRead)},
                   {std::to_string(provider.files)}});
    }
    if (!table.isEmpty()) {
        table.print(terminal);
        terminal.line();
    }
    terminal.line(counted(report.outcome.newEvents, "new event") + ", " +
                  formatBytes(report.bytesRead()) + " read in " + secondsText(report.seconds));
}

} // namespace

std::string counted(std::int64_t count, std::string_view noun) {
    return std::to_string(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}

std::int64_t IndexReport::bytesRead() const {
    std::int64_t sum = 0;
    for (const IndexStatistics::Provider& provider : statistics.providers)
        sum += provider.bytesRead;
    return sum;
}

IndexReport runIndexPass(const CommandEnvironment& environment,
                         const std::shared_ptr<UsageStore>& store) {
    const auto start = std::chrono::steady_clock::now();
    ProgressBar progress(environment.terminal);
    IndexerService indexer(store, environment.locations(), environment.calendar, environment.now);
    IndexReport report;
    try {
        report.outcome =
            indexer.index([&progress](const IndexingProgress& at) { progress.show(at); }).result();
    } catch (const UsageStoreError& error) {
        throw CommandError(std::string("reading the usage store failed: ") + error.what());
    }
    environment.terminal.clearTransient();
    report.statistics = indexer.statistics();
    report.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (report.statistics.unstoredFiles > 0)
        throw CommandError("the usage of " + counted(report.statistics.unstoredFiles, "file") +
                           " could not be stored; the next run reads it again");
    return report;
}

void printIndexReport(const CommandEnvironment& environment, const IndexReport& report) {
    if (environment.json) {
        environment.terminal.line(jsonText(encode(report)));
    } else {
        print(environment.terminal, report);
    }
}

void requireWhole(const IndexReport& report) {
    // What could be read is in; that something is missing must not look like success.
    std::string unread;
    if (report.statistics.unreadableFiles > 0)
        unread = counted(report.statistics.unreadableFiles, "file");
    if (report.statistics.unreadableFolders > 0)
        unread += (unread.empty() ? "" : " and ") +
                  counted(report.statistics.unreadableFolders, "folder");
    if (!unread.empty()) throw CommandError(unread + " could not be read");
}

int runIndex(const CommandEnvironment& environment) {
    environment.requireHome();
    const std::shared_ptr<UsageStore> store = environment.openStore();
    const IndexReport report = runIndexPass(environment, store);
    printIndexReport(environment, report);
    requireWhole(report);
    return exitOk;
}

} // namespace tokwatch
