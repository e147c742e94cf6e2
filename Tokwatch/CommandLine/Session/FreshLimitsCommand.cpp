#include "Tokwatch/App/Application.h"
#include "Tokwatch/CommandLine/LimitsPrinter.h"
#include "Tokwatch/CommandLine/Logs/IndexCommand.h"
#include "Tokwatch/CommandLine/Session/EventLoop.h"
#include "Tokwatch/CommandLine/Session/SessionCommands.h"
#include "Tokwatch/Limits/AttemptFile.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "TokwatchCore/Limits/LimitsCache.h"
#include "TokwatchCore/Limits/LimitsProviders.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <QCoroTask>
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

/// Codex's logs tell its limits, too. On a new data directory nobody has read them yet, and without
/// a login they are all there is.
void readLogsNobodyRead(const CommandSurroundings& surroundings,
                        const std::shared_ptr<UsageStore>& store, const LimitsByProvider& limits,
                        const std::vector<ProviderID>& providers) {
    const auto isUnread = [&limits](ProviderID provider) {
        const ProviderLimits* known = limitsOf(limits, provider);
        return traits(provider).logFormat == LogFormat::codexLines &&
               (known == nullptr || known->windows.empty());
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

} // namespace

int SessionCommands::run(const CommandSurroundings& surroundings,
                         const FreshLimitsOptions& options) {
    surroundings.requireHome();
    const std::shared_ptr<UsageStore> store = surroundings.openStoreForReading();
    Preferences preferences(settingsFile(settingsPath()));
    const PlainSettings plain = preferences.plain();
    const std::vector<ProviderID> shown = providersAsked(plain, options.provider);
    LimitsByProvider limits = surroundings.limits(*store, plain, shown);
    const bool isAsked = refresh(surroundings, store, preferences, limits, shown);
    showLimits(surroundings, plain, limits, shown);
    if (std::ranges::none_of(limits,
                             [](const auto& entry) { return showsSomething(entry.second); }))
        throw CommandError(shown.empty() ? "all assistants are switched off (disabledProviders)"
                           : isAsked     ? "no limits could be obtained"
                                         : "no assistant with limits was found; tokwatch doctor "
                                           "tells where they are looked for");
    return exitOk;
}

} // namespace tokwatch
