#pragma once

#include "Platform/Seams/Scheduler.h"
#include "Tokwatch/Indexing/IndexerService.h"
#include "TokwatchCore/Support/Date.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tokwatch {

/// What the next pass over changed logs is to look at: what events told of since the last one, and
/// what earlier passes could not finish, once that is due. Main thread only.
class PassRequests {
  public:
    /// `onDue` comes when unfinished files are to be looked at; they are in the requests by then.
    PassRequests(Scheduler& scheduler, Clock now, std::function<void()> onDue);

    /// These files, or without a scope all of them.
    void add(const IndexScope& scope);
    /// All that was asked for; nothing is left.
    IndexScope take();

    /// A pass over `scope` left these.
    void passed(const IndexScope& scope, const std::vector<UnfinishedFile>& files);
    /// A pass ended before it could tell what it left: all files, at `retry`.
    void failed(Date retry);
    void forgetUnfinished();

  private:
    void schedule();

    Scheduler& scheduler;
    const Clock now;
    const std::function<void()> onDue;
    std::set<std::string> changed;
    bool everything = false;
    std::map<std::string, Date> unfinished; ///< by path, when they are due
    std::optional<Date> retry;
    std::unique_ptr<ScheduledCall> next;
};

} // namespace tokwatch
