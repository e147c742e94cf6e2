#pragma once

#include "Platform/Seams/Scheduler.h"
#include "Platform/System/WorkLease.h"
#include "Tokwatch/App/AppModel.h"

#include <filesystem>
#include <memory>
#include <optional>

namespace tokwatch {

/// Shares the work with other processes over the same data directory: one of them works, the others
/// show what it stores. Main thread only.
class WorkSharing {
  public:
    /// How soon the work changes hands after its process ended, and how soon the others show what
    /// it stored.
    static constexpr Seconds lookInterval{2};

    /// References outlive it. The snapshot's directory is absent where there is none.
    WorkSharing(AppModel& model, Scheduler& scheduler, WorkLease lease,
                const std::optional<std::filesystem::path>& snapshotDirectory);

    /// Starts the model in the role that falls to it.
    void start(LimitsStart limits);
    void setRank(WorkLease::Rank rank) { lease.setRank(rank); }

  private:
    using FileTime = std::filesystem::file_time_type;

    void look();
    /// Whoever works replaces the snapshot after each change.
    std::optional<FileTime> snapshotTime() const;

    AppModel& model;
    Scheduler& scheduler;
    WorkLease lease;
    std::optional<std::filesystem::path> snapshot;
    std::optional<FileTime> seen;
    std::unique_ptr<ScheduledCall> looking;
};

} // namespace tokwatch
