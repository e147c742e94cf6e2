#pragma once

#include "TokwatchCore/Limits/InBackground.h"

#include <functional>
#include <memory>
#include <utility>

namespace tokwatch {

/// Makes calls one after another, in the order of asking, somewhere else than on the caller's
/// thread: for what may have to wait for a disk, a lock or another process. Usable from any thread.
/// What still waits is made even when the queue is gone, unless `run` drops it.
class BackgroundQueue {
  public:
    explicit BackgroundQueue(RunInBackground run);

    /// The future has the call's result, or its exception.
    template<typename Call>
    auto call(Call made) {
        const RunInBackground inTurn = [this](std::function<void()> work) { add(std::move(work)); };
        return inBackground(inTurn, std::move(made));
    }

  private:
    struct Waiting;

    void add(std::function<void()> call);

    RunInBackground run;
    std::shared_ptr<Waiting> waiting;
};

} // namespace tokwatch
