#include "TokwatchCore/Limits/BackgroundQueue.h"

#include <deque>
#include <mutex>

namespace tokwatch {

struct BackgroundQueue::Waiting {
    std::mutex mutex;
    std::deque<std::function<void()>> calls;
    bool isRunning = false;

    void makeCalls() {
        std::unique_lock lock(mutex);
        while (!calls.empty()) {
            std::function<void()> next = std::move(calls.front());
            calls.pop_front();
            lock.unlock();
            next();
            next = nullptr; // what it holds may go through a destructor that asks for a call
            lock.lock();
        }
        isRunning = false;
    }
};

BackgroundQueue::BackgroundQueue(RunInBackground elsewhere)
    : run(std::move(elsewhere)), waiting(std::make_shared<Waiting>()) {}

void BackgroundQueue::add(std::function<void()> call) {
    {
        const std::lock_guard lock(waiting->mutex);
        waiting->calls.push_back(std::move(call));
        if (std::exchange(waiting->isRunning, true)) return;
    }
    run([waiting = waiting] { waiting->makeCalls(); });
}

} // namespace tokwatch
