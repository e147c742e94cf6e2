#pragma once

#include "Platform/Seams/SystemNotifications.h"
#include "Tests/Support/EventLoop.h"
#include "Tests/Support/FakeLimitsProvider.h"
#include "Tests/Support/ManualScheduler.h"
#include "Tests/Support/StorageAtOnce.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tokwatch/App/AppModel.h"
#include "Tokwatch/Limits/LimitsService.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "TokwatchCore/Store/LimitHistory.h"
#include "TokwatchCore/Store/UsageStore.h"

#include <QPromise>

#include <deque>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace tokwatch::testing {

/// Passes that stay under way until the test ends them, one at a time as the real indexer's.
class FakeIndexer {
  public:
    int passes = 0;                               ///< asked for
    IndexScope lastScope;                         ///< of the last of them
    IndexerService::ProgressHandler lastProgress; ///< of the last one that ended

    std::size_t waiting() const { return requests.size(); }

    QFuture<IndexOutcome> index(IndexerService::ProgressHandler progress, const IndexScope& scope) {
        ++passes;
        lastScope = scope;
        Request& request = requests.emplace_back();
        request.progress = std::move(progress);
        request.promise.start();
        return request.promise.future();
    }
    void report(const IndexingProgress& progress) { requests.front().progress(progress); }
    void finish(const IndexOutcome& outcome = {}) {
        end([&](auto& promise) { promise.addResult(outcome); });
    }
    void fail(const std::string& reason) {
        end([&](auto& promise) {
            promise.setException(std::make_exception_ptr(std::runtime_error(reason)));
        });
    }

  private:
    struct Request {
        QPromise<IndexOutcome> promise;
        IndexerService::ProgressHandler progress;
    };
    void end(const auto& answer) {
        Request request = std::move(requests.front());
        requests.pop_front();
        answer(request.promise);
        request.promise.finish();
        lastProgress = std::move(request.progress);
    }
    std::deque<Request> requests;
};

class FakeNotifications final : public SystemNotifications {
  public:
    std::function<void()> refresh;
    std::function<void()> resume;
    std::function<void()> timeZone;
    std::function<void()> networkBack;
    void onRefreshRequest(std::function<void()> call) override { refresh = std::move(call); }
    void onResume(std::function<void()> call) override { resume = std::move(call); }
    void onTimeZoneChange(std::function<void()> call) override { timeZone = std::move(call); }
    void onNetworkBack(std::function<void()> call) override { networkBack = std::move(call); }
};

/// The watch that the model holds at the moment.
struct FakeWatch {
    std::vector<std::filesystem::path> roots;
    FileEventStream::OnEvents onEvents;
    int started = 0;
    int ended = 0;
    bool isRunning = true;

    std::unique_ptr<FileEventStream> start(const std::vector<std::string>& newRoots,
                                           FileEventStream::OnEvents call) {
        roots.assign(newRoots.begin(), newRoots.end());
        onEvents = std::move(call);
        ++started;
        struct Stream final : FileEventStream {
            explicit Stream(FakeWatch& owner) : watch(owner) {}
            ~Stream() override { ++watch.ended; }
            bool isRunning() const override { return watch.isRunning; }
            FakeWatch& watch;
        };
        return std::make_unique<Stream>(*this);
    }
    void onChange(const std::vector<std::string>& paths) const {
        std::vector<FileEvent> events;
        for (const std::string& path : paths)
            events.push_back({path});
        onEvents(std::move(events));
    }
};

/// A model over a home of its own in which nothing happens unless the test makes it happen.
class ModelWorld {
  public:
    ModelWorld() : ModelWorld(dateFromUnixSeconds(1'768'000'000)) {}
    explicit ModelWorld(Date start) : time(start) {
        for (const ProviderID id : allCases<ProviderID>) {
            sources[id] = std::make_shared<FakeLimitsProvider>();
            providers[id] = sources[id];
        }
        limitsService.emplace(providers, storageAtOnce(store), *preferences, time.clock(), time);
    }

    ModelWorld(const ModelWorld&) = delete;
    ModelWorld& operator=(const ModelWorld&) = delete;

    /// What is still under way ends, so that no coroutine waits for ever and keeps what it holds.
    ~ModelWorld() {
        model.reset();
        while (indexer.waiting() > 0)
            indexer.finish();
        for (const auto& [id, source] : sources) {
            while (source->underWay() > 0)
                source->answer(ProviderStatus::unavailable);
        }
        holdBackground = false;
        settle();
    }

    void makeModel() {
        model.emplace(ModelSurroundings{
            *preferences, store, prices, ProviderLocations{home.path()},
            SnapshotStore(snapshotDirectory), *limitsService,
            [this](IndexerService::ProgressHandler progress, const IndexScope& scope) {
                return indexer.index(std::move(progress), scope);
            },
            [](std::string_view path) {
                return path.ends_with(".jsonl") ? std::optional(ProviderID::claude) : std::nullopt;
            },
            [this](const auto& roots, Seconds, auto onEvents) {
                return watch.start(roots, std::move(onEvents));
            },
            notifications, time,
            [this](std::function<void()> work) { background.push_back(std::move(work)); },
            [this] { return calendar; },
            // Never the same moment twice, so that each publish shows.
            [this] { return time.now() + Seconds{1e-6 * ++clockReads}; }, history});
        updates = model->bindableLastUpdated().addNotifier([this] { ++publishes; });
    }

    /// Delivers events and does the background work, unless that is held back.
    void settle() {
        testing::settle();
        while (!holdBackground && !background.empty()) {
            const std::function<void()> work = std::move(background.front());
            background.pop_front();
            work();
            testing::settle();
        }
    }
    void advance(double seconds) {
        time.advance(Seconds{seconds}, [this] { settle(); });
    }
    /// Below a root that is watched.
    std::string logPath(const std::string& name) const {
        return (home / ".claude/projects" / name).string();
    }
    void finishPass(const IndexOutcome& outcome = {}) {
        indexer.finish(outcome);
        settle();
    }
    void finishAllPasses() {
        while (indexer.waiting() > 0)
            finishPass();
    }

    struct Loop {
        Loop() { needEventLoop(); }
    } loop;
    TemporaryDirectory home;
    TemporaryDirectory data;
    ManualScheduler time;
    std::optional<Preferences> preferences{std::in_place, settingsFile(data / "settings.conf")};
    std::optional<std::filesystem::path> snapshotDirectory = data.path();
    std::shared_ptr<UsageStore> store = std::make_shared<UsageStore>(data / "usage.sqlite");
    std::shared_ptr<LimitHistory> history = limitHistoryBeside(data / "usage.sqlite");
    std::shared_ptr<PriceTable> prices = std::make_shared<PriceTable>();
    std::map<ProviderID, std::shared_ptr<FakeLimitsProvider>> sources;
    LimitsService::Providers providers;
    std::optional<LimitsService> limitsService;
    FakeIndexer indexer;
    FakeNotifications notifications;
    FakeWatch watch;
    std::deque<std::function<void()>> background;
    bool holdBackground = false;
    int clockReads = 0;
    Calendar calendar = Calendar::utc();
    int publishes = 0; ///< publish passes that ended
    std::optional<AppModel> model;
    QPropertyNotifier updates;
};

} // namespace tokwatch::testing
