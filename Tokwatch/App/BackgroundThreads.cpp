#include "Tokwatch/App/BackgroundThreads.h"

#include <limits>
#include <optional>
#include <utility>

namespace tokwatch {

BackgroundThreads::BackgroundThreads(int count) : waiting(std::numeric_limits<std::size_t>::max()) {
    try {
        for (int i = 0; i < count; ++i)
            threads.emplace_back([this] {
                while (const std::optional<std::function<void()>> work = waiting.pop())
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

void BackgroundThreads::finish() {
    waiting.close();
    for (std::thread& thread : threads)
        thread.join();
}

void BackgroundThreads::run(std::function<void()> work) {
    waiting.push(std::move(work), 1);
}

} // namespace tokwatch
