#include "Tokwatch/Indexing/IndexerService.h"

#include "Tokwatch/Indexing/IndexPass.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <QPromise>

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <filesystem>
#include <thread>
#include <utility>

namespace tokwatch {
namespace {

/// After a pass of this many bytes the allocator is asked to give back what it kept.
constexpr std::int64_t longPassBytes = 16'777'216;

bool isBelow(std::string_view path, const std::filesystem::path& root) {
    return pathBelow(root, path).has_value();
}

} // namespace

/// The service's thread and the passes that wait for it, in arrival order.
class IndexerService::Executor {
  public:
    explicit Executor(IndexerService& service) : owner(service) {}

    ~Executor() {
        {
            const std::lock_guard lock(mutex);
            stop = true;
        }
        changed.notify_all();
        thread.join();
    }

    QFuture<IndexOutcome> submit(ProgressHandler progress, IndexScope scope) {
        const std::lock_guard lock(mutex);
        if (!scope) {
            const auto same =
                std::ranges::find_if(waiters, [](const Request& r) { return !r.scope; });
            if (same != waiters.end()) return same->promise.future();
        }
        Request& request = waiters.emplace_back();
        request.progress = std::move(progress);
        request.scope = std::move(scope);
        request.promise.start();
        changed.notify_all();
        return request.promise.future();
    }

  private:
    struct Request {
        QPromise<IndexOutcome> promise;
        ProgressHandler progress;
        IndexScope scope;
    };

    std::optional<Request> nextRequest() {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return stop || !waiters.empty(); });
        if (stop) return std::nullopt; // Promises that are never kept cancel their futures.
        Request request = std::move(waiters.front());
        waiters.pop_front();
        return request;
    }

    void work() {
        pthread_setname_np(pthread_self(), "indexer");
        while (std::optional<Request> request = nextRequest()) {
            try {
                request->promise.addResult(owner.pass(request->progress, request->scope, stop));
            } catch (...) {
                request->promise.setException(std::current_exception());
            }
            request->promise.finish();
        }
    }

    IndexerService& owner;
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Request> waiters; ///< while the thread is busy
    std::atomic<bool> stop = false;
    std::thread thread{[this] { work(); }}; ///< last: it uses all of the above
};

IndexerService::IndexerService(std::shared_ptr<UsageStore> usageStore, ProviderLocations places,
                               CalendarSource days, Clock clock, IngestEvents ingest)
    : store(std::move(usageStore)), locations(std::move(places)), calendar(std::move(days)),
      now(std::move(clock)), ingestEvents(std::move(ingest)),
      executor(std::make_unique<Executor>(*this)) {
    if (!ingestEvents) {
        ingestEvents = [this](std::span<const UsageEvent> events, const Calendar& in) {
            return store->ingest(events, in);
        };
    }
}

IndexerService::~IndexerService() = default;

QFuture<IndexOutcome> IndexerService::index(ProgressHandler progress, const IndexScope& scope) {
    return executor->submit(std::move(progress), scope);
}

IndexOutcome IndexerService::pass(const ProgressHandler& progress, const IndexScope& scope,
                                  const std::atomic<bool>& stop) {
    const Calendar days = calendar();
    IndexPass pass({*store, locations, days, now, ingestEvents, progress, scope, stop});
    IndexOutcome outcome = pass.run();
    if (!scope) logListingFailures(pass.listingFailures());
    std::int64_t bytes = 0;
    for (const IndexStatistics::Provider& provider : pass.statistics().providers)
        bytes += provider.bytesRead;
    if (bytes >= longPassBytes) {
        store->releaseMemory();
        malloc_trim(0);
    }
    const std::lock_guard lock(mutex);
    last = pass.statistics();
    return outcome;
}

void IndexerService::logListingFailures(const std::vector<std::string>& failures) {
    for (const std::string& failure : failures) {
        // Said once, until it is another one.
        if (std::ranges::count(listingFailures, failure) == 0) systemLog(failure);
    }
    listingFailures = failures;
}

IndexStatistics IndexerService::statistics() const {
    const std::lock_guard lock(mutex);
    return last;
}

std::optional<ProviderID> IndexerService::providerForChangedPath(std::string_view path) const {
    const std::string_view name = path.substr(path.rfind('/') + 1);
    for (const ProviderID provider : allCases<ProviderID>) {
        if (!isLogName(provider, name)) continue;
        for (const std::filesystem::path& root : locations.logRoots(provider))
            if (isBelow(path, root)) return provider;
    }
    return std::nullopt;
}

} // namespace tokwatch
