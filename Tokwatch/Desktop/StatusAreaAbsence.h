#pragma once

#include "TokwatchCore/Support/Date.h"

#include <functional>
#include <optional>

namespace tokwatch {

/// Judges what a missing status area asks for, which is the way to a program without windows: it
/// may never have been there, come up late, with its panel, or go with the session's bus. What is
/// to be done others do. Main thread only.
class StatusAreaAbsence {
  public:
    struct Sight {
        bool isKnown = false; ///< there was an answer to whether there is one
        bool isThere = false;
        bool hasBus = true; ///< without which none can come back
    };
    /// What is to be done, in this order.
    struct Demand {
        bool givesWay = false; ///< a popup would go with the first press beside it
        bool opens = false;    ///< the popover, in place of the item
        bool closes = false;   ///< the popover that was opened in place of the item
    };

    StatusAreaAbsence(std::function<Sight()> lookAtArea, Clock clock);

    bool isCertain() const;
    /// None is there, and none will come.
    bool isForGood() const;
    /// Since the start, at any time.
    bool hadArea() const { return had; }

    Demand changed(bool isAnyWindowShown);
    void openedForIt() { openedAt = now(); }
    void popoverClosed() { openedAt.reset(); }

  private:
    std::function<Sight()> look;
    Clock now;
    bool hasLooked = false;
    bool had = false;
    std::optional<Date> openedAt; ///< while what opened by itself is still open
};

} // namespace tokwatch
