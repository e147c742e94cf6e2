#include "Tokwatch/App/BackgroundThreads.h"

#include <utility>

namespace tokwatch {

BackgroundThreads::BackgroundThreads(int count) {
    try {
        for (int i = 0; i < count; ++i)
            threads.emplace_back([this] {
                while (const std::optional<std::function<void()>> work = next())
                    (*work)();
            });
    } catch (...) {
        finish();
        throw;
    }
}

BackgroundThreads::~BackgroundThreads() {
    finish();
}

std::optional<std::function<void()>> BackgroundThreads::next() {
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return isEnding || !waiting.empty(); });
    if (waiting.empty()) return std::nullopt;
    std::function<void()> work = std::move(waiting.front());
    waiting.pop_front();
    return work;
}

void BackgroundThreads::finish() {
    {
        const std::lock_guard lock(mutex);
        isEnding = true;
    }
    changed.notify_all();
    for (std::thread& thread : threads)
        thread.join();
}

void BackgroundThreads::run(std::function<void()> work) {
    {
        const std::lock_guard lock(mutex);
        waiting.push_back(std::move(work));
    }
    changed.notify_one();
}

} // namespace tokwatch
