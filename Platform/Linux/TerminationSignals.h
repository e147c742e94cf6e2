#pragma once

#include <QSocketNotifier>

#include <chrono>
#include <functional>
#include <optional>

namespace tokwatch {

/// Turns SIGINT, SIGTERM and SIGHUP into a call from the event loop, for as long as this lives; one
/// at a time. A second SIGINT or SIGTERM ends the process as it always would, for those who will
/// not wait; and whatever the end waits for, it takes `patience` at most.
class TerminationSignals {
  public:
    static constexpr std::chrono::seconds patience{10};

    explicit TerminationSignals(std::function<void()> onSignal);
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

    /// From now on the process ends within `patience`, with status 1 where it has not ended by
    /// itself: a thread that hangs in a system call must not keep it for ever.
    static void boundTheEnd();

    /// Ends the process at once, once what was written is flushed: for when all that is ours has
    /// ended, and leaving the usual way would wait for threads of others.
    [[noreturn]] static void endNow(int status);

    /// A signal has come, whether or not the call has.
    static bool arrived();

  private:
    std::optional<QSocketNotifier> notifier;
};

} // namespace tokwatch
