#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace tokwatch {

/// Hands values from one thread to another in order. A producer that is `most` weight ahead waits.
template<typename T>
class BoundedQueue {
  public:
    explicit BoundedQueue(std::size_t mostWeight) : most(mostWeight) {}

    /// False when the consumer has closed the queue and takes no more.
    bool push(T value, std::size_t weight) {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return closed || waiting < most; });
        if (closed) return false;
        waiting += weight;
        values.emplace_back(std::move(value), weight);
        changed.notify_all();
        return true;
    }

    /// The next value; none once the queue is closed and empty.
    std::optional<T> pop() {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return closed || !values.empty(); });
        if (values.empty()) return std::nullopt;
        auto [value, weight] = std::move(values.front());
        values.pop_front();
        waiting -= weight;
        changed.notify_all();
        return std::move(value);
    }

    /// What was pushed can still be popped; nothing more can be pushed.
    void close() {
        const std::lock_guard lock(mutex);
        closed = true;
        changed.notify_all();
    }

  private:
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::pair<T, std::size_t>> values;
    std::size_t most;
    std::size_t waiting = 0;
    bool closed = false;
};

} // namespace tokwatch
