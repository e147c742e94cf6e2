#pragma once

#include "Platform/Seams/Scheduler.h"
#include "Platform/System/WorkLease.h"
#include "Tokwatch/App/AppModel.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <utility>

namespace tokwatch {

/// Shares the work with other processes over the same data directory: one of them works, the others
/// show what it stores. Main thread only.
class WorkSharing {
  public:
    /// How soon the work changes hands after its process ended, and how soon the others show what
    /// it stored.
    static constexpr Seconds lookInterval{2};

    /// References outlive it. The database's path is absent where there is none.
    WorkSharing(AppModel& model, Scheduler& scheduler, WorkLease lease,
                const std::optional<std::filesystem::path>& database);

    /// Starts the model in the role that falls to it.
    void start(LimitsStart limits);
    void setRank(WorkLease::Rank rank) { lease.setRank(rank); }

  private:
    /// Sizes and times of the database's files, which change with every commit of any process.
    using FileStates = std::array<std::pair<std::uintmax_t, std::filesystem::file_time_type>, 2>;

    void look();
    void takeRole();
    FileStates fileStates() const;

    AppModel& model;
    Scheduler& scheduler;
    WorkLease lease;
    const std::array<std::filesystem::path, 2> files; ///< the database and its write-ahead log
    FileStates seen;
    std::unique_ptr<ScheduledCall> looking;
};

} // namespace tokwatch
