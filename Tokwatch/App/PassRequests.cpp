#include "Tokwatch/App/PassRequests.h"

#include <algorithm>
#include <ranges>
#include <utility>

namespace tokwatch {

PassRequests::PassRequests(Scheduler& timers, Clock clock, std::function<void()> call)
    : scheduler(timers), now(std::move(clock)), onDue(std::move(call)) {}

void PassRequests::add(const IndexScope& scope) {
    if (scope)
        changed.insert(scope->begin(), scope->end());
    else
        everything = true;
}

IndexScope PassRequests::take() {
    const std::set<std::string> paths = std::exchange(changed, {});
    if (std::exchange(everything, false)) return std::nullopt;
    return std::vector<std::string>(paths.begin(), paths.end());
}

void PassRequests::passed(const IndexScope& scope, const std::vector<UnfinishedFile>& files) {
    if (scope) {
        for (const std::string& path : *scope)
            unfinished.erase(path);
    } else {
        forgetUnfinished();
    }
    for (const UnfinishedFile& file : files)
        unfinished.insert_or_assign(file.path, file.due);
    schedule();
}

void PassRequests::failed(Date moment) {
    forgetUnfinished();
    everything = true;
    retry = moment;
    schedule();
}

void PassRequests::forgetUnfinished() {
    unfinished.clear();
    retry.reset();
    next.reset();
}

void PassRequests::schedule() {
    next.reset();
    std::optional<Date> due = retry;
    for (const Date moment : unfinished | std::views::values)
        due = due ? std::min(*due, moment) : moment;
    if (!due) return;
    next = scheduler.after(*due - now(), [this] {
        const auto paths = unfinished | std::views::keys;
        changed.insert(paths.begin(), paths.end());
        retry.reset(); // all files are asked for since it was set
        onDue();
    });
}

} // namespace tokwatch
