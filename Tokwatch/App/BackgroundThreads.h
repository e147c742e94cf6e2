#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace tokwatch {

/// Threads that run work in the order in which it comes. They start with this object, so that a
/// system that allows no more of them is met at launch, where it is an error, and not in the middle
/// of the program's life, where it would be silence.
class BackgroundThreads {
  public:
    /// Throws std::system_error when a thread cannot be started.
    explicit BackgroundThreads(int count);
    /// Waits until all work that was handed over is done.
    ~BackgroundThreads();
    BackgroundThreads(const BackgroundThreads&) = delete;
    BackgroundThreads& operator=(const BackgroundThreads&) = delete;

    /// Callable from any thread.
    void run(std::function<void()> work);

  private:
    /// Waits for it; none when all is done and nothing more comes.
    std::optional<std::function<void()>> next();
    void finish();

    std::mutex mutex; ///< over what is waiting, and whether this ends
    std::condition_variable changed;
    std::deque<std::function<void()>> waiting;
    bool isEnding = false;
    std::vector<std::thread> threads;
};

} // namespace tokwatch
