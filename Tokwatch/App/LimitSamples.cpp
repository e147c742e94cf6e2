#include "Tokwatch/App/LimitSamples.h"

#include "TokwatchCore/Store/LimitHistory.h"

#include <QCoroFuture>

#include <optional>
#include <utility>

namespace tokwatch {

LimitSamples::LimitSamples(std::shared_ptr<LimitHistory> limitHistory, RunInBackground run)
    : history(std::move(limitHistory)), queue(std::move(run)) {}

QCoro::Task<> LimitSamples::read(LimitsByProvider limits, Date now) {
    if (!history) co_return;
    const std::weak_ptr<Life> weak = life;
    const QFuture<std::optional<SamplesByProvider>> reading =
        queue.call([history = history, limits = std::move(limits), now] {
            return history->samples(limits, now);
        });
    const std::optional<SamplesByProvider> samples = co_await reading;
    if (samples && !weak.expired()) state.setValue(*samples);
}

} // namespace tokwatch
