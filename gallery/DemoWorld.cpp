#include "gallery/DemoWorld.h"

#include "Tokwatch/Indexing/IndexerService.h"

#include <cstdlib>
#include <stdexcept>

namespace tokwatch::testing {
namespace {

/// Thursday, 12 March 2026, 17:40 UTC.
constexpr double demoMoment = 1'773'337'200;
constexpr const char* demoDay = "2026-03-12";

constexpr Seconds hours(double count) {
    return Seconds{count * 3600};
}

/// The demo home, made once for all pictures.
const std::filesystem::path& demoHome() {
    static const TemporaryDirectory home;
    static const std::filesystem::path files = [] {
        std::filesystem::path path = home / "demo";
        const std::string command = std::string(TOKWATCH_DEMO_HOME) + " --quiet --days 90 --end " +
                                    demoDay + " " + path.string();
        // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing else runs.
        if (std::system(command.c_str()) != 0) throw std::runtime_error("there is no demo home");
        return path;
    }();
    return files;
}

constexpr Seconds fiveHours = hours(5);
constexpr Seconds week = hours(7 * 24);

} // namespace

DemoWorld::DemoWorld(Home kind) : ModelWorld(dateFromUnixSeconds(demoMoment)), clock(time.clock()) {
    *prices = PriceTable::bundled();
    if (kind == Home::demo) {
        std::filesystem::copy(demoHome(), home.path(), std::filesystem::copy_options::recursive);
        IndexerService(store, ProviderLocations{home.path()}, Calendar::utc, time.clock())
            .index()
            .result();
    }
    preferences->hasCompletedOnboarding = true;
    makeModel();
    model->start();
    settle();
    finishAllPasses();
}

LimitWindow DemoWorld::window(const std::string& id, const std::string& label, double used,
                              Seconds duration, Seconds untilReset) const {
    return {id, label, used, duration.count(), time.now() + untilReset, LimitSource::live()};
}

ProviderLimits DemoWorld::claudeLimits() const {
    ProviderLimits limits;
    limits.plan = "Max";
    limits.windows = {window("session", "Session", 0.36, fiveHours, hours(3.1)),
                      window("weekly", "Weekly", 0.58, week, hours(53)),
                      window("weekly.opus", "Weekly Opus", 0.71, week, hours(53))};
    limits.credits = Credits{"Extra usage", std::nullopt, 12.4, 50.0, false};
    limits.status = ProviderStatus::ok;
    limits.fetchedAt = time.now();
    return limits;
}

ProviderLimits DemoWorld::codexLimits() const {
    ProviderLimits limits;
    limits.plan = "Plus";
    limits.windows = {window("session", "Session", 0.12, fiveHours, hours(1.4)),
                      window("weekly", "Weekly", 0.31, week, hours(121))};
    limits.status = ProviderStatus::ok;
    limits.fetchedAt = time.now();
    return limits;
}

void DemoWorld::showUsualLimits() {
    model->apply(claudeLimits(), ProviderID::claude);
    model->apply(codexLimits(), ProviderID::codex);
    settle();
}

} // namespace tokwatch::testing
