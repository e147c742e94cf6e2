#pragma once

#include <QSocketNotifier>

#include <functional>
#include <optional>

namespace tokwatch {

/// Turns SIGINT, SIGTERM and SIGHUP into a call from the event loop, for as long as this lives; one
/// at a time. A second signal of the kind ends the process as it always would, for those who will
/// not wait.
class TerminationSignals {
  public:
    explicit TerminationSignals(std::function<void()> onSignal);
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

    /// A signal has come, whether or not the call has.
    static bool arrived();

  private:
    std::optional<QSocketNotifier> notifier;
};

} // namespace tokwatch
