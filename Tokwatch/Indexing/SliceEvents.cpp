#include "Tokwatch/Indexing/SliceEvents.h"

#include <algorithm>
#include <utility>

namespace tokwatch {

void SliceEvents::put(UsageEvent event, Lines added) {
    // Most lines that repeat a key follow each other.
    if (!events.empty() && events.back().dedupKey == event.dedupKey) {
        events.back() = std::move(event);
        lines.back().isUnfinished = added.isUnfinished;
        return;
    }
    const auto [found, isNew] = positions.try_emplace(event.dedupKey, events.size());
    if (isNew) {
        events.push_back(std::move(event));
        lines.push_back(added);
        haveLast = true;
    } else {
        events[found->second] = std::move(event);
        lines[found->second].isUnfinished = added.isUnfinished;
    }
}

void SliceEvents::add(UsageEvent event) {
    put(std::move(event), {});
}

void SliceEvents::add(ClaudeLine line, std::int64_t offset) {
    put(std::move(line.event), {offset, line.isUnfinished});
}

Seconds SliceEvents::patienceFor(std::size_t position) const {
    return haveLast && position + 1 == events.size() ? lastPatience : patience;
}

Date SliceEvents::newestLine(std::size_t position, const End& end) const {
    const Date stated = events[position].timestamp;
    const Date latest = end.after + patience;
    return stated > latest && end.written <= latest ? end.written : stated;
}

bool SliceEvents::isOpen(std::size_t position, std::int64_t offset,
                         const std::optional<End>& end) const {
    if (!lines[position].isUnfinished || offset - lines[position].first > mostReadAgain ||
        events.size() - position > mostOpen)
        return false;
    if (!end) return true;
    const Date newest = newestLine(position, *end);
    return end->before - newest < patienceFor(position) && newest - end->after <= patience;
}

std::vector<UsageEvent> SliceEvents::take(std::int64_t offset, const std::optional<End>& end) {
    SliceEvents next;
    std::size_t complete = 0;
    const bool keepsLast = haveLast && !events.empty() && isOpen(events.size() - 1, offset, end);
    for (std::size_t i = 0; i < events.size(); ++i) {
        if (isOpen(i, offset, end)) {
            lines[i].completeAt =
                (end ? newestLine(i, *end) : events[i].timestamp) + patienceFor(i);
            next.put(std::move(events[i]), lines[i]);
        } else {
            if (complete != i) events[complete] = std::move(events[i]);
            ++complete;
        }
    }
    events.erase(events.begin() + static_cast<std::ptrdiff_t>(complete), events.end());
    next.haveLast = keepsLast;
    std::swap(*this, next);
    return std::move(next.events);
}

void SliceEvents::clear() {
    *this = {};
}

std::optional<SliceEvents::Open> SliceEvents::open() const {
    if (events.empty()) return std::nullopt;
    return Open{lines.front().first, std::ranges::min(lines, {}, &Lines::completeAt).completeAt};
}

} // namespace tokwatch
