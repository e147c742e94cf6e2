#pragma once

#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Support/Date.h"

namespace tokwatch {

/// How old a limit's number is. What came a little ago is as good as new, whatever became of the
/// question since.
struct LimitAge {
    /// The age beyond which a number is shown as an old one.
    static constexpr Seconds current{900};
    /// What is asked for is asked for anew after so long.
    static constexpr Seconds betweenFetches{300};

    /// When the number held: of its own date, or of the fetch that brought it.
    static Date asOf(const LimitWindow& window, Date fetchedAt);
    static bool isOld(const LimitWindow& window, Date fetchedAt, Date now);
};

} // namespace tokwatch
