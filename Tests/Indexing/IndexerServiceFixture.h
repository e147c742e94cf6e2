#pragma once

#include "Tests/Support/CapturedLog.h"
#include "Tests/Support/LogLines.h"
#include "Tests/Support/ManualScheduler.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tokwatch/Indexing/IndexerService.h"
#include "TokwatchCore/Support/ISO8601.h"

namespace tokwatch::testing {

inline const std::string claudeLog = ".claude/projects/p/a.jsonl";

/// A home and a store of its own for each test, in March 2026.
struct IndexerServiceTest : Test {
    IndexOutcome index(IndexerService::ProgressHandler progress = {}) {
        return indexer().index(std::move(progress)).result();
    }
    IndexerService& indexer() {
        if (!service)
            service =
                std::make_unique<IndexerService>(store, locations, days, time.clock(), ingest);
        return *service;
    }
    /// With a store that knows nothing.
    void startOver() {
        store = std::make_shared<UsageStore>(":memory:");
        service.reset();
    }
    UsageSummary summary() const {
        return store->summary(30, *parseISO8601("2026-03-20T00:00:00Z"), utc, PriceTable());
    }
    std::int64_t outputTokens() const { return summary().tokens.output; }

    TemporaryDirectory home;
    ProviderLocations locations{home.path()};
    Calendar utc = Calendar::utc();
    CalendarSource days = Calendar::utc;
    ManualScheduler time{*parseISO8601("2026-03-10T12:30:00Z")};
    std::shared_ptr<UsageStore> store = std::make_shared<UsageStore>(home / "data/usage.sqlite");
    IndexerService::IngestEvents ingest;
    std::unique_ptr<IndexerService> service;
    CapturedLog log;
};

} // namespace tokwatch::testing
