#pragma once

#include <QCoroTask>
#include <QEventLoop>

#include <exception>
#include <optional>

namespace tokwatch::testing {

/// Runs the event loop until the task ends; its result, or its exception, which QCoro's own
/// function of this name would wait for in vain.
template<typename T>
T waitFor(QCoro::Task<T> task) {
    QEventLoop loop;
    std::optional<T> result;
    std::exception_ptr failure;
    const auto wait = [&]() -> QCoro::Task<> {
        try {
            T value = co_await task;
            result = std::move(value);
        } catch (...) {
            failure = std::current_exception();
        }
        loop.quit();
    };
    const QCoro::Task<> waiting = wait();
    if (!result && !failure) loop.exec();
    if (failure) std::rethrow_exception(failure);
    return std::move(*result);
}

} // namespace tokwatch::testing
