#pragma once

#include <QFuture>
#include <QPromise>

#include <exception>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

namespace tokwatch {

/// Runs work, normally later and on another thread.
using RunInBackground = std::function<void(std::function<void()> work)>;

/// The future has the work's result, or its exception.
template<typename Work>
auto inBackground(const RunInBackground& run, Work work) -> QFuture<std::invoke_result_t<Work>> {
    using Result = std::invoke_result_t<Work>;
    const auto promise = std::make_shared<QPromise<Result>>();
    promise->start();
    run([promise, work = std::move(work)] {
        try {
            if constexpr (std::is_void_v<Result>)
                work();
            else
                promise->addResult(work());
        } catch (...) {
            promise->setException(std::current_exception());
        }
        promise->finish();
    });
    return promise->future();
}

} // namespace tokwatch
