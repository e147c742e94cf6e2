#pragma once

#include "Platform/Seams/Scheduler.h"

#include <algorithm>
#include <list>
#include <memory>
#include <optional>

namespace tokwatch::testing {

/// Time that stands still until the test moves it. Calls come in order of their time, equal times
/// in order of asking.
class ManualScheduler final : public Scheduler {
  public:
    explicit ManualScheduler(Date start = dateFromUnixSeconds(1'768'000'000)) : wallClock(start) {}

    Date now() const { return wallClock; }
    /// A clock to inject; valid as long as this lives.
    Clock clock() {
        return [this] { return wallClock; };
    }

    /// Lets time pass, making the calls that fall due on the way. `settle` runs after each call and
    /// once at the end: the place to drain an event loop.
    void advance(
        Seconds time, const std::function<void()>& settle = [] {}) {
        const Seconds until = elapsed + time;
        for (;;) {
            const auto next = std::ranges::min_element(entries, {}, &Entry::due);
            if (next == entries.end() || next->due > until) break;
            pass(std::max(next->due, elapsed));
            const auto call = next->call; // outlives a call that cancels itself
            if (next->period)
                next->due += *next->period;
            else
                entries.erase(next);
            (*call)();
            settle();
        }
        pass(until);
        settle();
    }

    /// Sets the wall clock forwards or backwards; timers do not notice.
    void jump(Seconds by) { wallClock += by; }

    std::unique_ptr<ScheduledCall> after(Seconds delay, std::function<void()> call) override {
        return add(delay, std::nullopt, std::move(call));
    }
    std::unique_ptr<ScheduledCall> every(Seconds period, std::function<void()> call) override {
        return add(period, period, std::move(call));
    }

    std::size_t pending() const { return entries.size(); }

  private:
    using Call = std::shared_ptr<std::function<void()>>;
    struct Entry {
        Seconds due;
        std::optional<Seconds> period;
        Call call;
    };
    struct Handle final : ScheduledCall {
        Handle(ManualScheduler& owner, Call owned) : scheduler(owner), call(std::move(owned)) {}
        ~Handle() override {
            std::erase_if(scheduler.entries, [this](const Entry& e) { return e.call == call; });
        }
        ManualScheduler& scheduler;
        Call call;
    };

    std::unique_ptr<ScheduledCall> add(Seconds delay, std::optional<Seconds> period,
                                       std::function<void()> call) {
        auto shared = std::make_shared<std::function<void()>>(std::move(call));
        entries.push_back({elapsed + std::max(delay, Seconds{0}), period, shared});
        return std::make_unique<Handle>(*this, shared);
    }
    void pass(Seconds until) {
        wallClock += until - elapsed;
        elapsed = until;
    }

    Date wallClock;
    Seconds elapsed{0};
    std::list<Entry> entries;
};

} // namespace tokwatch::testing
