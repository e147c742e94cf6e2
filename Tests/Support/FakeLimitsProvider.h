#pragma once

#include "TokwatchCore/Limits/LimitsProvider.h"

#include <QCoroFuture>
#include <QPromise>

#include <algorithm>
#include <deque>
#include <memory>
#include <vector>

namespace tokwatch::testing {

/// A source whose fetches stay under way until the test answers them.
class FakeLimitsProvider final : public LimitsProvider {
  public:
    std::vector<Date> attempts; ///< when each fetch began
    std::size_t mostUnderWay = 0;

    std::size_t underWay() const { return pending.size(); }

    /// Ends the oldest fetch; its continuation runs in the next turn of the event loop.
    void answer(const ProviderLimits& limits) {
        const auto promise = pending.at(0);
        pending.pop_front();
        promise->addResult(limits);
        promise->finish();
    }

    /// Ends the oldest fetch without numbers.
    void answer(ProviderStatus status) {
        ProviderLimits limits;
        limits.status = status;
        limits.fetchedAt = attempts.back();
        answer(limits);
    }

    QCoro::Task<ProviderLimits> fetch(Date now) override {
        attempts.push_back(now);
        const auto promise = std::make_shared<QPromise<ProviderLimits>>();
        promise->start();
        pending.push_back(promise);
        mostUnderWay = std::max(mostUnderWay, pending.size());
        const QFuture<ProviderLimits> future = promise->future();
        const ProviderLimits limits = co_await future;
        co_return limits;
    }

  private:
    std::deque<std::shared_ptr<QPromise<ProviderLimits>>> pending;
};

/// A successful result with one window.
inline ProviderLimits someLimits(Date fetchedAt, double usedFraction = 0.5) {
    ProviderLimits limits;
    limits.plan = "Max";
    limits.windows = {
        {"session", "Session", usedFraction, 18000.0, std::nullopt, LimitSource::live()}};
    limits.status = ProviderStatus::ok;
    limits.fetchedAt = fetchedAt;
    return limits;
}

} // namespace tokwatch::testing
