#include "Platform/System/PrivateFiles.h"
#include "Tokwatch/CommandLine/ExportFormats.h"
#include "Tokwatch/CommandLine/StoredCommands.h"
#include "Tokwatch/CommandLine/Terminal/VersionedJson.h"
#include "Tokwatch/Preferences/PlainSettings.h"
#include "TokwatchCore/Store/StoredAccounts.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <tuple>

namespace tokwatch {
namespace {

std::string hostName() {
    std::array<char, HOST_NAME_MAX + 1> name{};
    return ::gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

/// All that is stored, the oldest day first.
std::vector<DailyRow> storedDays(const std::filesystem::path& database) {
    std::vector<DailyRow> days = StoredAccounts(database).rows();
    const auto place = [](const DailyRow& row) {
        return std::tie(row.day, row.provider, row.model);
    };
    std::ranges::sort(days, {}, place);
    return days;
}

std::vector<ModelCount> counts(const std::filesystem::path& database,
                               std::span<const DailyRow> days, const PriceTable& prices) {
    const std::filesystem::path file = countsBeside(database);
    try {
        return lastingCounts(file, days, prices);
    } catch (const UsageStoreError& error) {
        throw CommandError("keeping the counters in " + file.string() +
                           " failed, and without them they could fall: " + error.what());
    }
}

std::string exported(const CommandSurroundings& surroundings, const ExportOptions& options) {
    const std::shared_ptr<UsageStore> store = surroundings.openStoreForReading();
    const PlainSettings settings = PlainSettings::ofUser();
    const LimitsByProvider limits =
        surroundings.limits(*store, settings, settings.enabledProviders);
    const std::filesystem::path database = *surroundings.paths.database();
    const std::vector<DailyRow> days = storedDays(database);
    const PriceTable prices = PriceTable::bundled();
    const std::string host = options.host.value_or(hostName());
    switch (options.format) {
    case ExportFormat::prometheus:
        return prometheusText(host, counts(database, days, prices), limits);
    case ExportFormat::csv:
        return exportCSV(host, days, prices);
    case ExportFormat::json:
        return jsonText(versioned(exportJson(host, days, prices, limits, surroundings.now()))) +
               '\n';
    }
    return {};
}

/// A collector's file takes the place of a file and of nothing else.
void requireReplaceable(const std::filesystem::path& file) {
    std::error_code none;
    const std::filesystem::file_status status = std::filesystem::status(file, none);
    if (!std::filesystem::exists(status) || std::filesystem::is_regular_file(status)) return;
    throw CommandError(
        "writing the export failed: " + file.string() +
        (std::filesystem::is_directory(status) ? " is a directory" : " is not a regular file"));
}

} // namespace

int StoredCommands::run(const CommandSurroundings& surroundings, const ExportOptions& options) {
    const bool isPrinted = !options.output || *options.output == "-";
    if (!isPrinted) requireReplaceable(*options.output);
    const std::string text = exported(surroundings, options);
    if (isPrinted) {
        surroundings.terminal.write(text);
        return exitOk;
    }
    try {
        replaceForOthers(std::filesystem::absolute(*options.output), text);
    } catch (const std::system_error& error) {
        throw CommandError(std::string("writing the export failed: ") + error.what());
    }
    return exitOk;
}

} // namespace tokwatch
