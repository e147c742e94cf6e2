#include "LimitsCommand.h"

#include "Application.h"
#include "EventLoop.h"
#include "LimitsPrinter.h"
#include "LimitsProviders.h"
#include "Preferences.h"
#include "StoredLimits.h"

#include <QCoroTask>
#include <QSettings>

#include <algorithm>

namespace tokwatch {
namespace {

/// Fetches now, by the service's own rules: merged with what is stored, gated, and stored.
class Fetch {
  public:
    Fetch(const CommandEnvironment& environment, const std::shared_ptr<UsageStore>& store,
          Preferences& preferences)
        : world(Surroundings::real(environment.paths)),
          service(makeLimitsProviders(store, world.credentials, world.http,
                                      environment.locations().codexHome()),
                  store, preferences, environment.now, scheduler) {
        service.onUpdate = [this](ProviderID provider, const ProviderLimits& limits) {
            results.insert_or_assign(provider, limits);
        };
    }

    LimitsByProvider run(const std::vector<ProviderID>& providers) {
        QCoro::waitFor(all(providers));
        return results;
    }

  private:
    QCoro::Task<> all(std::vector<ProviderID> providers) {
        std::vector<QCoro::Task<>> fetches;
        for (const ProviderID provider : providers)
            fetches.push_back(service.refresh(provider, true));
        for (QCoro::Task<>& fetch : fetches)
            co_await fetch;
    }

    EventLoop loop;
    QtScheduler scheduler;
    Surroundings world;
    LimitsService service;
    LimitsByProvider results;
};

/// Whether the service was asked so lately that it need not be asked again, by whichever process.
bool isFresh(const LimitsByProvider& known, ProviderID provider, Date now) {
    const auto found = known.find(provider);
    if (found == known.end() || found->second.status != ProviderStatus::ok) return false;
    return RefreshPolicy::elapsed(found->second.fetchedAt, now) < RefreshPolicy::baseInterval;
}

bool showsSomething(const ProviderLimits& limits) {
    return limits.status == ProviderStatus::ok || !limits.windows.empty() || limits.credits;
}

std::vector<ProviderID> shownProviders(const Preferences& preferences,
                                       std::optional<ProviderID> only) {
    if (only) return {*only};
    return preferences.enabledProviders();
}

void refresh(const CommandEnvironment& environment, const std::shared_ptr<UsageStore>& store,
             Preferences& preferences, LimitsByProvider& limits,
             std::vector<ProviderID> providers) {
    const std::vector<ProviderID> enabled = preferences.enabledProviders();
    std::erase_if(providers, [&](ProviderID provider) {
        return std::ranges::count(enabled, provider) == 0 ||
               !environment.locations().isPresent(provider) ||
               isFresh(limits, provider, environment.now());
    });
    if (providers.empty()) return;
    for (auto& [provider, fetched] : Fetch(environment, store, preferences).run(providers))
        limits.insert_or_assign(provider, fetched);
}

Json encodeAll(const LimitsByProvider& limits, const std::vector<ProviderID>& order) {
    Json json = Json::object();
    for (const ProviderID provider : order) {
        const auto found = limits.find(provider);
        if (found != limits.end())
            json[std::string(rawValue(provider))] = encode(found->second, DateCoding::iso8601);
    }
    return json;
}

} // namespace

int runLimits(const CommandEnvironment& environment, const LimitsOptions& options) {
    environment.requireHome();
    const std::shared_ptr<UsageStore> store = environment.openStore();
    const std::unique_ptr<QSettings> settings = userSettings();
    Preferences preferences(*settings);
    const std::vector<ProviderID> shown = shownProviders(preferences, options.provider);

    LimitsByProvider limits = storedLimits(*store, shown);
    if (options.refresh) refresh(environment, store, preferences, limits, shown);
    if (environment.json)
        environment.terminal.line(jsonText(encodeAll(limits, shown)));
    else
        printLimits(environment, preferences, limits, shown);

    const bool isAnythingShown =
        std::ranges::any_of(limits, [](const auto& entry) { return showsSomething(entry.second); });
    if (options.refresh && !isAnythingShown)
        throw CommandError("no provider's limits could be had");
    return exitOk;
}

} // namespace tokwatch
