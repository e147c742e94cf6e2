#include "Tokwatch/Updates/SoftwareUpdates.h"

#include <utility>

namespace tokwatch {
namespace {

/// Timers stand still while the machine sleeps, when a day of theirs is several.
constexpr Seconds lookInterval{3600};

kivo::UpdateRecord recordOf(const UpdatePreferences& settings) {
    UpdatePreferences::Memory memory = settings.memory();
    return {memory.lastCheck, memory.lastDateSeen, std::move(memory.manifest),
            std::move(memory.signature)};
}

} // namespace

SoftwareUpdates::SoftwareUpdates(const kivo::UpdateFeed& feed, Surroundings given)
    : scheduler(given.scheduler), settings(settingsFile(given.settingsFile)),
      checks(feed, recordOf(settings),
             {std::move(given.fetch), std::move(given.now),
              [this] { return settings.agreed.value(); },
              [this](const kivo::UpdateRecord& record) {
                  settings.setMemory(
                      {record.askedAt, record.newestSeen, record.document, record.signature});
              }}),
      agreement(settings.agreed.addNotifier([this] { lookSoon(); })),
      hourly(scheduler.every(lookInterval, [this] { checks.checkWhenDue(); })) {
    settings.followFile();
    lookSoon();
}

/// From the event loop: neither a start nor a switch waits for it.
void SoftwareUpdates::lookSoon() {
    soon = scheduler.after(Seconds{0}, [this] { checks.checkWhenDue(); });
}

} // namespace tokwatch
