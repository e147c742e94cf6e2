#include "Tokwatch/App/WorkSharing.h"

#include "TokwatchCore/Store/SnapshotStore.h"

#include <system_error>
#include <utility>

namespace tokwatch {

WorkSharing::WorkSharing(AppModel& appModel, Scheduler& timers, WorkLease workLease,
                         const std::optional<std::filesystem::path>& snapshotDirectory)
    : model(appModel), scheduler(timers), lease(std::move(workLease)) {
    if (snapshotDirectory) snapshot = SnapshotStore::fileIn(*snapshotDirectory);
}

void WorkSharing::start(LimitsStart limits) {
    seen = snapshotTime();
    model.start(lease.renew() ? Role::working : Role::showing, limits);
    looking = scheduler.every(lookInterval, [this] { look(); });
}

void WorkSharing::look() {
    model.setRole(lease.renew() ? Role::working : Role::showing);
    if (model.role() == Role::working) return;
    const std::optional<FileTime> time = snapshotTime();
    if (time != std::exchange(seen, time)) model.storeChanged();
}

std::optional<WorkSharing::FileTime> WorkSharing::snapshotTime() const {
    if (!snapshot) return std::nullopt;
    std::error_code missing;
    const FileTime time = std::filesystem::last_write_time(*snapshot, missing);
    return missing ? std::nullopt : std::optional(time);
}

} // namespace tokwatch
