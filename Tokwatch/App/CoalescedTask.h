#pragma once

namespace tokwatch {

/// Whether a task that makes sense only once at a time runs, and whether it is wanted again: any
/// number of requests while it runs lead to exactly one further run.
class CoalescedTask {
  public:
    /// True when the caller is to start the task.
    bool request() {
        if (running) {
            again = true;
            return false;
        }
        running = true;
        return true;
    }

    /// At the end of a run: true when the task is to run once more.
    bool finish() {
        running = again;
        again = false;
        return running;
    }

  private:
    bool running = false;
    bool again = false;
};

} // namespace tokwatch
