#include "Tests/Support/LogLines.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TokwatchCore/Ingestion/ClaudeLogParser.h"
#include "TokwatchCore/Ingestion/CodexLogParser.h"
#include "TokwatchCore/Ingestion/GrokUsageParser.h"
#include "TokwatchCore/Ingestion/JSONLTail.h"
#include "TokwatchCore/Store/PriceTable.h"
#include "TokwatchCore/Store/UsageStore.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace tokwatch {
namespace {

using testing::ClaudeResponse;
using testing::CodexLog;
using testing::TemporaryDirectory;

/// A line with `bytes` of tool output that is no business of ours.
std::string noise(std::size_t bytes) {
    return R"({"parentUuid":null,"type":"user","message":{"content":")" + std::string(bytes, 'x') +
           "\"}}\n";
}

void tail(benchmark::State& state) {
    const TemporaryDirectory home;
    std::string lines;
    while (lines.size() < 8'000'000)
        lines += ClaudeResponse{}.line() + noise(4'000);
    const auto path = home.write("log.jsonl", lines);
    const LogFile file{path.string(), fileAttributes(path)};
    TailBuffer buffer;
    for (auto _ : state)
        benchmark::DoNotOptimize(
            JSONLTail::read(file, std::nullopt, JSONLTail::sliceBytes, buffer));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(lines.size()));
}
BENCHMARK(tail);

template<typename Parser>
void parse(benchmark::State& state, const std::string& line) {
    Parser parser;
    for (auto _ : state)
        benchmark::DoNotOptimize(parser.parse(line));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(line.size()));
}
void claudeResponse(benchmark::State& state) {
    parse<ClaudeLogParser>(state, ClaudeResponse{}.line());
}
BENCHMARK(claudeResponse);

void claudeToolOutput(benchmark::State& state) {
    parse<ClaudeLogParser>(state, noise(4'000));
}
BENCHMARK(claudeToolOutput);

void codexUsage(benchmark::State& state) {
    parse<CodexLogParser>(state, CodexLog::usage("resp_1", 1000, 100));
}
BENCHMARK(codexUsage);

void codexLimits(benchmark::State& state) {
    parse<CodexLogParser>(state, CodexLog::limits(42));
}
BENCHMARK(codexLimits);

void grokDocumentOf30Turns(benchmark::State& state) {
    parse<GrokUsageParser>(state, testing::grokDocument("s", 30));
}
BENCHMARK(grokDocumentOf30Turns);

std::vector<UsageEvent> events(int count, int first) {
    const Date start = *parseISO8601("2026-09-01T00:00:00Z");
    std::vector<UsageEvent> batch;
    for (int i = 0; i < count; ++i) {
        const unsigned number =
            static_cast<unsigned>(first + i) * 2654435761U; // keys come in no order
        batch.push_back({ProviderID::claude,
                         "model-" + std::to_string(i % 30),
                         "session-" + std::to_string(i / 50),
                         "msg_" + std::to_string(number),
                         start + Seconds{(first + i) % 90 * 86'400.0},
                         {10, 20, 30, 40, 50, 60},
                         std::nullopt});
    }
    return batch;
}

void ingest(benchmark::State& state) {
    const TemporaryDirectory home;
    UsageStore store(home / "usage.sqlite");
    int first = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const std::vector<UsageEvent> batch = events(static_cast<int>(state.range(0)), first);
        first += static_cast<int>(state.range(0));
        state.ResumeTiming();
        store.ingest(batch, Calendar::utc());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(ingest)->Arg(1)->Arg(1'000)->Arg(16'384)->Iterations(8);

void summary(benchmark::State& state) {
    UsageStore store(":memory:");
    store.ingest(events(90 * 30, 0), Calendar::utc());
    const PriceTable prices = PriceTable::bundled();
    const Date now = *parseISO8601("2026-11-29T12:00:00Z");
    for (auto _ : state)
        benchmark::DoNotOptimize(store.summary(90, now, Calendar::utc(), prices));
}
BENCHMARK(summary);

} // namespace
} // namespace tokwatch
