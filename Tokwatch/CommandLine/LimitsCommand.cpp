#include "Tokwatch/CommandLine/Commands.h"

#include "Tokwatch/App/Application.h"
#include "Tokwatch/CommandLine/EventLoop.h"
#include "Tokwatch/CommandLine/IndexCommand.h"
#include "Tokwatch/CommandLine/LimitsPrinter.h"
#include "Tokwatch/CommandLine/Terminal/VersionedJson.h"
#include "Tokwatch/Limits/AttemptFile.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "TokwatchCore/Limits/LimitsCache.h"
#include "TokwatchCore/Limits/LimitsProviders.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <QCoroTask>
#include <QSettings>
#include <QThreadPool>

#include <algorithm>

namespace tokwatch {
namespace {

/// Fetches now, by the service's own rules: as often as all processes together may, merged with
/// what is stored, gated, and stored.
class Fetch {
  public:
    Fetch(const CommandSurroundings& surroundings, const std::shared_ptr<UsageStore>& store,
          Preferences& preferences)
        : real(Surroundings::real(surroundings.paths)),
          stored(std::make_shared<LimitsCache>(store, inBackground())),
          service(makeLimitsProviders(stored, real.credentials, real.http,
                                      surroundings.locations().codexAuthFile()),
                  {stored, attemptLedgerBeside(surroundings.paths.database()), inBackground()},
                  preferences, surroundings.now, scheduler) {
        service.onUpdate = [this](ProviderID provider, const ProviderLimits& limits) {
            results.insert_or_assign(provider, limits);
        };
    }

    LimitsByProvider run(const std::vector<ProviderID>& providers) {
        QCoro::waitFor(all(providers));
        return results;
    }

  private:
    RunInBackground inBackground() {
        return [this](std::function<void()> work) { background.start(std::move(work)); };
    }

    QCoro::Task<> all(std::vector<ProviderID> providers) {
        std::vector<QCoro::Task<>> fetches;
        for (const ProviderID provider : providers)
            fetches.push_back(service.refresh(provider, true));
        for (QCoro::Task<>& fetch : fetches)
            co_await fetch;
    }

    EventLoop loop;
    QtScheduler scheduler;
    Surroundings real;
    QThreadPool background;
    std::shared_ptr<LimitsCache> stored;
    LimitsService service;
    LimitsByProvider results;
};

bool showsSomething(const ProviderLimits& limits) {
    return limits.status == ProviderStatus::ok || !limits.windows.empty() || limits.credits;
}

std::vector<ProviderID> shownProviders(const Preferences& preferences,
                                       std::optional<ProviderID> only) {
    if (only) return {*only};
    return preferences.enabledProviders();
}

/// Codex's logs tell its limits, too. On a new data directory nobody has read them yet, and without
/// a login they are all there is.
void readLogsNobodyRead(const CommandSurroundings& surroundings,
                        const std::shared_ptr<UsageStore>& store, const LimitsByProvider& limits,
                        const std::vector<ProviderID>& providers) {
    const auto isUnread = [&limits](ProviderID provider) {
        const auto known = limits.find(provider);
        return traits(provider).logFormat == LogFormat::codexLines &&
               (known == limits.end() || known->second.windows.empty());
    };
    if (std::ranges::none_of(providers, isUnread)) return;
    try {
        runIndexPass(surroundings, store);
    } catch (const CommandError& error) {
        systemLog(std::string("the session files could not be read for limits: ") + error.what());
    }
}

/// False where there is nobody to ask.
bool refresh(const CommandSurroundings& surroundings, const std::shared_ptr<UsageStore>& store,
             Preferences& preferences, LimitsByProvider& limits,
             std::vector<ProviderID> providers) {
    const std::vector<ProviderID> enabled = preferences.enabledProviders();
    std::erase_if(providers, [&](ProviderID provider) {
        return std::ranges::count(enabled, provider) == 0 ||
               !surroundings.locations().isPresent(provider);
    });
    if (providers.empty()) return false;
    readLogsNobodyRead(surroundings, store, limits, providers);
    for (auto& [provider, fetched] : Fetch(surroundings, store, preferences).run(providers))
        limits.insert_or_assign(provider, fetched);
    return true;
}

/// The records, and in each window that runs out before its reset the moment when it does.
Json encodeAll(const LimitsByProvider& limits, const std::vector<ProviderID>& order,
               const RunOuts& runOuts) {
    Json json = Json::object();
    for (const ProviderID provider : order) {
        const auto found = limits.find(provider);
        if (found == limits.end()) continue;
        Json& record = json[std::string(rawValue(provider))];
        record = encode(found->second, DateCoding::iso8601);
        for (std::size_t at = 0; at < found->second.windows.size(); ++at)
            if (const auto moment = runOuts.moment(provider, found->second.windows[at].id))
                record["windows"][at]["runsOutAt"] = encode(*moment, DateCoding::iso8601);
    }
    return json;
}

} // namespace

int runLimits(const CommandSurroundings& surroundings, const LimitsOptions& options) {
    surroundings.requireHome();
    const std::shared_ptr<UsageStore> store = surroundings.openStoreForReading();
    const std::unique_ptr<QSettings> settings = userSettings();
    Preferences preferences(*settings);
    const std::vector<ProviderID> shown = shownProviders(preferences, options.provider);

    LimitsByProvider limits = surroundings.limits(*store, preferences, shown);
    const bool isAsked =
        options.refresh && refresh(surroundings, store, preferences, limits, shown);
    const RunOuts runOuts = surroundings.runOuts(limits);
    if (surroundings.json)
        surroundings.terminal.line(jsonText(versioned(encodeAll(limits, shown, runOuts))));
    else
        printLimits(surroundings, preferences, limits, shown, runOuts);
    if (limits.empty() && !options.refresh && !surroundings.json)
        surroundings.terminal.line("tokwatch limits --refresh asks for them.");

    const bool isAnythingShown =
        std::ranges::any_of(limits, [](const auto& entry) { return showsSomething(entry.second); });
    if (options.refresh && !isAnythingShown)
        throw CommandError(isAsked ? "no limits could be obtained"
                                   : "no assistant with limits was found; tokwatch doctor tells "
                                     "where they are looked for");
    return exitOk;
}

} // namespace tokwatch
