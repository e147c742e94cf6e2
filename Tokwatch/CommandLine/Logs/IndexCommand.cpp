#include "Tokwatch/CommandLine/Logs/IndexCommand.h"

#include "Tokwatch/CommandLine/Logs/LogCommands.h"
#include "Tokwatch/CommandLine/Terminal/ProgressBar.h"
#include "Tokwatch/CommandLine/Terminal/Table.h"
#include "Tokwatch/CommandLine/Terminal/VersionedJson.h"
#include "TokwatchCore/Ingestion/LogFiles.h"
#include "TokwatchCore/Records/RecordCoding.h"
#include "TokwatchCore/Support/Amounts.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

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

bool decodes(const std::string& path, const std::string& json) {
    try {
        decodeCursorRow(path, json);
        return true;
    } catch (const DecodingError&) {
        return false;
    }
}

/// The provider's files whose stored positions say nothing: a reset cannot tell whose they are and
/// leaves them alone, and so does a pass.
std::vector<std::string> stuckFiles(UsageStore& store, const ProviderLocations& locations,
                                    ProviderID provider) {
    std::vector<std::string> stuck;
    for (const auto& [path, json] : store.cursorTexts()) {
        const bool isOurs = std::ranges::any_of(locations.logRoots(provider),
                                                [&path](const std::filesystem::path& root) {
                                                    return pathBelow(root, path).has_value();
                                                });
        if (isOurs && !decodes(path, json)) stuck.push_back(path);
    }
    std::ranges::sort(stuck);
    return stuck;
}

} // namespace

std::int64_t IndexReport::bytesRead() const {
    std::int64_t sum = 0;
    for (const IndexStatistics::Provider& provider : statistics.providers)
        sum += provider.bytesRead;
    return sum;
}

IndexReport runIndexPass(const CommandSurroundings& surroundings,
                         const std::shared_ptr<UsageStore>& store) {
    const auto start = std::chrono::steady_clock::now();
    ProgressBar progress(surroundings.terminal);
    Indexer indexer(store, surroundings.locations(), surroundings.calendar, surroundings.now);
    IndexReport report;
    try {
        report.outcome = indexer.pass([&progress](const IndexingProgress& at) {
            progress.show(displayName(at.provider), at.bytesRead, at.bytesTotal);
        });
    } catch (const UsageStoreError& error) {
        throw CommandError(std::string("reading the usage store failed: ") + error.what());
    }
    surroundings.terminal.clearTransient();
    report.statistics = indexer.statistics();
    report.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (report.statistics.unstoredFiles > 0)
        throw CommandError("the usage of " + counted(report.statistics.unstoredFiles, "file") +
                           " could not be stored; the next run reads it again");
    return report;
}

void printIndexReport(const CommandSurroundings& surroundings, const IndexReport& report) {
    if (surroundings.json) {
        surroundings.terminal.line(jsonText(versioned(encode(report))));
    } else {
        print(surroundings.terminal, report);
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

int LogCommands::run(const CommandSurroundings& surroundings, const IndexOptions&) {
    surroundings.requireHome();
    const std::shared_ptr<UsageStore> store = surroundings.openStore();
    const IndexReport report = runIndexPass(surroundings, store);
    printIndexReport(surroundings, report);
    requireWhole(report);
    return exitOk;
}

int LogCommands::run(const CommandSurroundings& surroundings, const RereadOptions& options) {
    const ProviderID provider = options.provider;
    surroundings.requireHome();
    const std::shared_ptr<UsageStore> store = surroundings.openStore();
    std::vector<std::string> stuck;
    try {
        store->resetCursors(provider);
        stuck = stuckFiles(*store, surroundings.locations(), provider);
    } catch (const UsageStoreError& error) {
        throw CommandError("resetting " + std::string(rawValue(provider)) +
                           " cursors failed: " + error.what());
    }
    const IndexReport report = runIndexPass(surroundings, store);
    printIndexReport(surroundings, report);
    if (!stuck.empty())
        throw CommandError("the stored read positions of " +
                           counted(static_cast<std::int64_t>(stuck.size()), "file") +
                           " do not decode, so these are not read again: " + stuck.front() +
                           (stuck.size() > 1 ? ", …" : ""));
    requireWhole(report);
    return exitOk;
}

} // namespace tokwatch
