#include "Tokwatch/Indexing/Indexer.h"

#include "Tokwatch/Indexing/IndexPass.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <malloc.h>

#include <algorithm>
#include <thread>
#include <utility>

namespace tokwatch {
namespace {

/// After a pass of this many bytes the allocator is asked to give back what it kept.
constexpr std::int64_t longPassBytes = 16'777'216;
constexpr unsigned mostReaders = 8;

} // namespace

std::size_t Indexer::usualReaders() {
    return std::clamp(std::thread::hardware_concurrency(), 1U, mostReaders);
}

Indexer::Indexer(std::shared_ptr<UsageStore> usageStore, ProviderLocations places,
                 CalendarSource days, Clock clock, IngestEvents ingest, std::size_t most)
    : store(std::move(usageStore)), locations(std::move(places)), calendar(std::move(days)),
      now(std::move(clock)), ingestEvents(std::move(ingest)), readers(most) {
    if (!ingestEvents) {
        ingestEvents = [this](std::span<const UsageEvent> events, const Calendar& in) {
            return store->ingest(events, in);
        };
    }
}

IndexOutcome Indexer::pass(const ProgressHandler& progress, const IndexScope& scope,
                           const std::atomic<bool>& stop) {
    const Calendar days = calendar();
    IndexPass pass({*store, locations, days, now, ingestEvents, progress, scope, storeTroubles,
                    readers, stop});
    IndexOutcome outcome = pass.run();
    if (!scope) logListingFailures(pass.listingFailures());
    const IndexStatistics statistics = pass.statistics();
    std::int64_t bytes = 0;
    for (const IndexStatistics::Provider& provider : statistics.providers)
        bytes += provider.bytesRead;
    if (bytes >= longPassBytes) {
        store->releaseMemory();
        malloc_trim(0);
    }
    const std::lock_guard lock(mutex);
    last = statistics;
    return outcome;
}

void Indexer::logListingFailures(const std::vector<std::string>& failures) {
    for (const std::string& failure : failures) {
        // Said once, until it is another one.
        if (std::ranges::count(listingFailures, failure) == 0) systemLog(failure);
    }
    listingFailures = failures;
}

IndexStatistics Indexer::statistics() const {
    const std::lock_guard lock(mutex);
    return last;
}

} // namespace tokwatch
