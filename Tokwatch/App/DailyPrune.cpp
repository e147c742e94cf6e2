#include "Tokwatch/App/DailyPrune.h"

#include "Tokwatch/Preferences/Preferences.h"
#include "TokwatchCore/Ingestion/LogFiles.h"
#include "TokwatchCore/Limits/InBackground.h"
#include "TokwatchCore/Store/Pruning.h"
#include "TokwatchCore/Store/UsageStore.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <QCoroFuture>

#include <chrono>
#include <exception>
#include <string>

namespace tokwatch {
namespace {

constexpr Seconds interval{86'400};
/// After one that failed: passes come every few seconds, and a full disk stays full.
constexpr Seconds retryInterval{3'600};

} // namespace

DailyPrune::DailyPrune(const ModelSurroundings& given) : surroundings(given) {}

bool DailyPrune::isDue(Date now) const {
    // What stands in for the store while its file cannot be opened is not worth the day's.
    if (state->isRunning || surroundings.store->isDetached()) return false;
    // A moment further ahead was noted by a clock that has been set back since.
    const auto isNear = [now](const std::optional<Date>& moment, Seconds distance) {
        return moment && std::chrono::abs(now - *moment) < distance;
    };
    return !isNear(surroundings.preferences.lastPruneAt(), interval) &&
           !isNear(state->failedAt, retryInterval);
}

QCoro::Task<> DailyPrune::runIfDue() {
    const Date now = surroundings.now();
    if (!isDue(now)) co_return;
    state->isRunning = true;
    const std::weak_ptr<State> left = state;
    Preferences& preferences = surroundings.preferences;
    const Calendar days = surroundings.calendar();
    const QFuture<bool> pruning =
        inBackground(surroundings.runInBackground, [now, store = surroundings.store, days,
                                                    roots = surroundings.locations.allLogRoots()] {
            try {
                store->prune(pruneLimit(now, store->newestDay(), days), days);
                // Assistants delete their logs after a month.
                store->dropCursors(DeletedLogs(roots));
                return true;
            } catch (const std::exception& error) {
                systemLog(std::string("prune failed: ") + error.what());
                return false;
            }
        });
    const bool pruned = co_await pruning;
    const std::shared_ptr<State> still = left.lock();
    if (!still) co_return;
    still->isRunning = false;
    still->failedAt = pruned ? std::nullopt : std::optional(now);
    if (pruned) preferences.setLastPruneAt(now);
}

} // namespace tokwatch
