#pragma once

#include "TokwatchCore/Presentation/Pace.h"
#include "TokwatchCore/Records/LimitSample.h"
#include "TokwatchCore/Support/Date.h"

#include <optional>
#include <span>
#include <vector>

namespace tokwatch {

/// How a limit's running window has been used up so far.
struct BurnUp {
    struct Point {
        Date moment;
        double usedFraction = 0;

        friend bool operator==(const Point&, const Point&) = default;
    };

    Date begin; ///< of the window; of what is known of it where its duration is not
    Date resetsAt;
    /// In time order, never falling: where the use began, the samples, and the present number last.
    /// Between two of them the first one holds, as a sample is kept where a number changes.
    std::vector<Point> points;
    Seconds watched{0};           ///< from the first sample to the present number
    std::size_t observations = 0; ///< the samples and the present number
    Pace pace = Pace::unknown;    ///< what the limit's caption says

    friend bool operator==(const BurnUp&, const BurnUp&) = default;
};

/// From the samples of a window, in time order, those of earlier windows among them. A number that
/// fell, or another reset, began the window anew. Absent without a sample before the present
/// number, and of a limit that is stale, old, past its reset or without one.
std::optional<BurnUp> burnUp(const LimitWindow& window, Date fetchedAt,
                             std::span<const LimitSample> samples, Date now);

} // namespace tokwatch
