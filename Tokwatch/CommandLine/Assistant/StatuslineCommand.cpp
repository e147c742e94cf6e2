#include "Tokwatch/CommandLine/Assistant/StatuslineCommand.h"

#include "Tokwatch/CommandLine/Assistant/LocalReading.h"
#include "Tokwatch/CommandLine/Assistant/PatientRead.h"
#include "Tokwatch/CommandLine/Terminal/VersionedJson.h"
#include "TokwatchCore/Store/LimitHistory.h"
#include "TokwatchCore/Store/PriceTable.h"
#include "TokwatchCore/Store/StoredLimits.h"
#include "TokwatchCore/Store/UsageStore.h"
#include "TokwatchCore/Support/Calendar.h"
#include "TokwatchCore/Support/PlainText.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <nlohmann/json.hpp>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <exception>
#include <memory>
#include <string>
#include <utility>

namespace tokwatch {
namespace {

/// Bytes. What is told has one or two thousand.
constexpr std::size_t largestStatus = 4'194'304;
/// The assistant writes at once; a prompt is not to wait for one that does not.
constexpr std::chrono::milliseconds inputPatience{500};
/// How long another process may hold the store. What cannot be stored now is told again.
constexpr std::chrono::milliseconds storePatience{50};

bool isWhole(std::string_view text) {
    const std::size_t last = text.find_last_not_of(" \t\r\n");
    return last != std::string_view::npos && text[last] == '}' && nlohmann::json::accept(text);
}

std::optional<SessionStatus> readStatus(Date now) {
    // Somebody who tries the command by hand sees the line that it prints of itself.
    if (::isatty(STDIN_FILENO) != 0) return std::nullopt;
    const auto text = patientRead(STDIN_FILENO, largestStatus, inputPatience, isWhole);
    return text ? SessionStatus::decode(*text, now) : std::nullopt;
}

/// None where there is no database and nothing to be stored in one.
std::shared_ptr<UsageStore> openStore(const std::filesystem::path& database, bool isToStore) {
    std::error_code ignored;
    if (!isToStore && !std::filesystem::exists(database, ignored)) return nullptr;
    try {
        auto store = std::make_shared<UsageStore>(database, storePatience);
        recordLimits(*store, limitHistoryBeside(database, storePatience));
        return store;
    } catch (const UsageStoreError&) {
        return UsageStore::readOnly(database, storePatience);
    }
}

/// None where nobody ever read the logs.
std::optional<UsageAmount> today(UsageStore& usage, Date now) {
    if (usage.isUnread()) return std::nullopt;
    const UsageSummary summary = usage.summary(1, now, Calendar::current(), PriceTable::bundled());
    return UsageAmount{summary.totalCostUSD, summary.tokens.total()};
}

std::optional<ProviderLimits> storedClaude(UsageStore& usage) {
    LimitsByProvider known = storedLimits(usage, std::array{ProviderID::claude});
    const auto found = known.find(ProviderID::claude);
    return found == known.end() ? std::nullopt : std::optional(std::move(found->second));
}

/// What is stored and what was told together; stored as such where that is news.
void combineLimits(UsageStore& usage, const std::vector<LimitWindow>& told,
                   std::optional<ProviderLimits>& limits, Date now) {
    const std::optional<ProviderLimits> stored = storedClaude(usage);
    // The look comes before the lock: most lines have nothing new to tell.
    std::optional<ProviderLimits> changed = withLocalReading(stored, told, now);
    limits = changed ? changed : stored;
    if (!changed) return;
    usage.changeLimits(ProviderID::claude, [&](const std::optional<ProviderLimits>& present) {
        changed = withLocalReading(present, told, now);
        limits = changed ? changed : present;
        return changed;
    });
}

/// Adds what the store knows, as far as it can be had.
void consultStore(const std::filesystem::path& database, AssistantFacts& facts, bool wantsToday,
                  Date now) {
    std::vector<LimitWindow> told;
    if (facts.status) told = facts.status->limits;
    facts.limits = withLocalReading(std::nullopt, told, now);
    try {
        const std::shared_ptr<UsageStore> usage = openStore(database, !told.empty());
        if (!usage) return;
        if (wantsToday) facts.today = today(*usage, now);
        combineLimits(*usage, told, facts.limits, now);
    } catch (const std::exception& error) {
        systemLog(std::string("the status line does without the usage store: ") + error.what());
    }
}

} // namespace

CLI::App& addStatusline(CLI::App& app, DataArguments& arguments, StatuslineOptions& options) {
    CLI::App& command =
        addDataCommand(app, arguments, "statusline",
                       "Print a line for Claude Code's status line, from what that tells");
    command
        .add_option_function<std::vector<std::string>>(
            "--format",
            [&options](const std::vector<std::string>& names) {
                options.parts.clear();
                for (const std::string& name : names) {
                    if (const auto part = caseNamed<LinePart>(name))
                        options.parts.push_back(*part);
                    else
                        options.unknownParts.push_back(name);
                }
            },
            "Which parts, in which order (default: all)")
        ->delimiter(',')
        ->type_name("PART,...");
    return command;
}

int runStatusline(const UserPaths& paths, bool json, const StatuslineOptions& options) {
    const Date now = systemNow();
    AssistantFacts facts{readStatus(now), {}, {}};
    const bool wantsToday = json || std::ranges::count(options.parts, LinePart::today) > 0;
    if (const auto database = paths.database()) consultStore(*database, facts, wantsToday, now);
    Terminal terminal = Terminal::throughPipe();
    if (json) {
        terminal.line(jsonText(versioned(assistantJson(facts))));
    } else {
        const PlainSettings settings = PlainSettings::read(settingsPath());
        std::string line = assistantLine(facts, options.parts, settings, terminal, now);
        for (const std::string& unknown : options.unknownParts)
            line += " · no part is called \"" + plainText(unknown) + "\", only " +
                    CLI::detail::join(caseNames<LinePart>, ", ");
        terminal.line(line);
    }
    return terminal.flush() ? exitFailure : exitOk;
}

} // namespace tokwatch
