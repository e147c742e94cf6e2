#pragma once

#include "Tokwatch/App/ModelSurroundings.h"
#include "TokwatchCore/Support/Date.h"

#include <QCoroTask>

#include <memory>
#include <optional>

namespace tokwatch {

/// Deletes what is older than the store keeps, and where deleted logs were read to: once a day, by
/// whom is asked after each pass. The moment is kept in the settings. Main thread only.
class DailyPrune {
  public:
    /// The surroundings outlive it.
    explicit DailyPrune(const ModelSurroundings& surroundings);

    /// Ends at once where it is not due, or is under way. It may be gone by the end.
    QCoro::Task<> runIfDue();

  private:
    struct State {
        bool isRunning = false;
        std::optional<Date> failedAt; ///< unless it has succeeded since
    };

    bool isDue(Date now) const;

    const ModelSurroundings& surroundings;
    const std::shared_ptr<State> state = std::make_shared<State>(); ///< gone with this
};

} // namespace tokwatch
