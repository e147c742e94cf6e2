#pragma once

#include <QFuture>
#include <QPromise>

#include <exception>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

namespace tokwatch {

/// Makes calls one after another, in the order of asking, somewhere else than on the caller's
/// thread: for what may have to wait for a disk, a lock or another process. Usable from any thread.
/// What still waits is made even when the queue is gone, unless `run` drops it.
class BackgroundQueue {
  public:
    /// Runs work, normally later and on another thread.
    using Run = std::function<void(std::function<void()> work)>;

    explicit BackgroundQueue(Run run);

    /// The future has the call's result, or its exception.
    template<typename Call>
    auto call(Call made) -> QFuture<std::invoke_result_t<Call>> {
        using Result = std::invoke_result_t<Call>;
        const auto promise = std::make_shared<QPromise<Result>>();
        promise->start();
        add([promise, made = std::move(made)] {
            try {
                if constexpr (std::is_void_v<Result>)
                    made();
                else
                    promise->addResult(made());
            } catch (...) {
                promise->setException(std::current_exception());
            }
            promise->finish();
        });
        return promise->future();
    }

  private:
    struct Waiting;

    void add(std::function<void()> call);

    Run run;
    std::shared_ptr<Waiting> waiting;
};

} // namespace tokwatch
