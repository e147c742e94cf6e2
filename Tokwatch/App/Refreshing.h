#pragma once

#include "Tokwatch/App/CoalescedTask.h"
#include "TokwatchCore/Records/ProviderID.h"

#include <QCoroTask>
#include <QObject>
#include <QProperty>

#include <functional>
#include <map>
#include <span>

namespace tokwatch {

/// The refreshes that somebody asks for: a pass over all logs, and the providers' limits. Any
/// number of requests while one is under way lead to one more pass, and to the fetches of the
/// providers that none is under way for. Main thread only.
class Refreshing : public QObject {
  public:
    using Pass = std::function<QCoro::Task<>()>;
    using Fetch = std::function<QCoro::Task<>(ProviderID provider)>;

    Refreshing(Pass passOverAllLogs, Fetch fetch);

    /// `asked`: whose limits are to be fetched.
    void request(std::span<const ProviderID> asked);

    /// Until the passes and fetches of all requests have ended. Reading observes it.
    bool isUnderWay() const { return isUnderWayState.value(); }

  private:
    // May be gone whenever this resumes.
    QCoro::Task<> refreshWhileWanted();

    const Pass passOverAllLogs;
    const Fetch fetch;
    CoalescedTask refreshing;
    std::map<ProviderID, QCoro::Task<>> fetches; ///< the last of each
    QProperty<bool> isUnderWayState{false};
};

} // namespace tokwatch
