#include "Tokwatch/App/ProgressRelay.h"

#include "Tokwatch/App/MainThread.h"

#include <utility>

namespace tokwatch {

ProgressRelay::ProgressRelay(std::function<void(const IndexingProgress&)> call)
    : receiver(std::move(call)) {}

void ProgressRelay::post(const IndexingProgress& progress) {
    const std::lock_guard lock(mutex);
    const bool underWay = latest.has_value();
    latest = progress;
    if (!underWay) onMainThread([self = shared_from_this()] { self->deliver(); });
}

void ProgressRelay::deliver() {
    std::unique_lock lock(mutex);
    const std::optional<IndexingProgress> progress = std::exchange(latest, std::nullopt);
    lock.unlock();
    if (progress && !ended) receiver(*progress);
}

} // namespace tokwatch
