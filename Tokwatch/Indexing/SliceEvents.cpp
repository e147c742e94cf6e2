#include "Tokwatch/Indexing/SliceEvents.h"

#include <algorithm>
#include <set>
#include <utility>

namespace tokwatch {
namespace {

/// What each pass may have to read again, in bytes. Only lines of one minute can be more, such as
/// an agent's enormous output between two lines of a response.
constexpr std::int64_t mostReadAgain = 8'388'608;

} // namespace

std::size_t SliceEvents::put(UsageEvent event, std::int64_t offset) {
    const auto [found, isNew] = positions.try_emplace(event.dedupKey, events.size());
    if (isNew) {
        events.push_back(std::move(event));
        firstLines.push_back(offset);
    } else {
        events[found->second] = std::move(event);
    }
    return found->second;
}

void SliceEvents::add(UsageEvent event) {
    put(std::move(event), 0);
}

void SliceEvents::add(ClaudeLine line, std::int64_t offset) {
    const std::size_t position = put(std::move(line.event), offset);
    for (std::optional<std::size_t>& each : openOnes) {
        if (each == position) each.reset();
    }
    // Any line ends the response before it, whatever that one's own last line said.
    std::optional<std::size_t>& slot = openOnes[line.isSidechain ? 1 : 0];
    slot = line.isUnfinished ? std::optional(position) : std::nullopt;
}

bool SliceEvents::isToWait(std::size_t position, Date now, std::int64_t end) const {
    const Seconds age = now - events[position].timestamp;
    return age < patience && age >= -patience && end - firstLines[position] <= mostReadAgain;
}

void SliceEvents::endFile(Date now, std::int64_t end) {
    for (std::optional<std::size_t>& each : openOnes) {
        if (each && !isToWait(*each, now, end)) each.reset();
    }
}

std::vector<UsageEvent> SliceEvents::take() {
    std::set<std::size_t, std::greater<>> kept; // from behind, so that positions stay true
    for (const std::optional<std::size_t>& each : openOnes) {
        if (each) kept.insert(*each);
    }
    SliceEvents next;
    for (const std::size_t position : kept) {
        const std::size_t moved = next.put(std::move(events[position]), firstLines[position]);
        for (std::size_t slot = 0; slot < openOnes.size(); ++slot) {
            if (openOnes[slot] == position) next.openOnes[slot] = moved;
        }
        events.erase(events.begin() + static_cast<std::ptrdiff_t>(position));
    }
    std::vector<UsageEvent> complete = std::move(events);
    // The map keeps its memory.
    positions.clear();
    for (auto& [key, position] : next.positions)
        positions.emplace(key, position);
    events = std::move(next.events);
    firstLines = std::move(next.firstLines);
    openOnes = next.openOnes;
    return complete;
}

void SliceEvents::clear() {
    events.clear();
    firstLines.clear();
    positions.clear();
    openOnes = {};
}

std::optional<SliceEvents::Open> SliceEvents::open() const {
    std::optional<Open> all;
    for (const std::optional<std::size_t>& each : openOnes) {
        if (!each) continue;
        const Open one{firstLines[*each], events[*each].timestamp + patience};
        all = all ? Open{std::min(all->firstLine, one.firstLine),
                         std::max(all->completeAt, one.completeAt)}
                  : one;
    }
    return all;
}

} // namespace tokwatch
