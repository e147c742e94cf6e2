#include "Tokwatch/Indexing/IndexerService.h"

#include "TokwatchCore/Ingestion/LogFiles.h"

#include <QPromise>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <filesystem>
#include <thread>
#include <utility>

namespace tokwatch {
namespace {

bool isBelow(std::string_view path, const std::filesystem::path& root) {
    return pathBelow(root, path).has_value();
}

} // namespace

/// The service's thread and the passes that wait for it, in arrival order.
class IndexerService::Executor {
  public:
    explicit Executor(Indexer& passes) : indexer(passes) {}

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
                request->promise.addResult(indexer.pass(request->progress, request->scope, stop));
            } catch (...) {
                request->promise.setException(std::current_exception());
            }
            request->promise.finish();
        }
    }

    Indexer& indexer;
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Request> waiters; ///< while the thread is busy
    std::atomic<bool> stop = false;
    std::thread thread{[this] { work(); }}; ///< last: it uses all of the above
};

IndexerService::IndexerService(std::shared_ptr<UsageStore> store, ProviderLocations places,
                               CalendarSource calendar, Clock clock, IngestEvents ingestEvents)
    : locations(places), indexer(std::move(store), std::move(places), std::move(calendar),
                                 std::move(clock), std::move(ingestEvents)),
      executor(std::make_unique<Executor>(indexer)) {}

IndexerService::~IndexerService() = default;

QFuture<IndexOutcome> IndexerService::index(ProgressHandler progress, const IndexScope& scope) {
    return executor->submit(std::move(progress), scope);
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
