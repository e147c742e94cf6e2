#include "Tokwatch/App/WorkSharing.h"

#include "TokwatchCore/Support/SystemLog.h"

#include <string>
#include <system_error>
#include <utility>

namespace tokwatch {
namespace {

std::array<std::filesystem::path, 2> filesOf(const std::optional<std::filesystem::path>& database) {
    if (!database) return {};
    return {*database, database->string() + "-wal"};
}

} // namespace

WorkSharing::WorkSharing(AppModel& appModel, Scheduler& timers, WorkLease workLease,
                         const std::optional<std::filesystem::path>& database)
    : model(appModel), scheduler(timers), lease(std::move(workLease)), files(filesOf(database)),
      seen(fileStates()) {}

void WorkSharing::start(LimitsStart limits) {
    model.start(lease.renew() ? Role::working : Role::showing, limits);
    looking = scheduler.every(lookInterval, [this] { look(); });
}

void WorkSharing::look() {
    takeRole();
    const FileStates states = fileStates();
    model.lookAtStore(states != std::exchange(seen, states));
}

void WorkSharing::takeRole() {
    const bool stoodIn = lease.isStandIn();
    model.setRole(lease.renew() ? Role::working : Role::showing);
    if (lease.isStandIn() && !stoodIn)
        systemLog(
            "the process that reads the logs and asks for limits is stopped; this one does it "
            "in its place");
}

WorkSharing::FileStates WorkSharing::fileStates() const {
    FileStates states;
    for (std::size_t i = 0; i < files.size(); ++i) {
        std::error_code missing;
        states[i] = {std::filesystem::file_size(files[i], missing),
                     std::filesystem::last_write_time(files[i], missing)};
    }
    return states;
}

} // namespace tokwatch
