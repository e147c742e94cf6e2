#include "TokwatchCore/Presentation/BurnUp.h"

#include "TokwatchCore/Presentation/LimitAge.h"
#include "TokwatchCore/Presentation/LimitBarModel.h"

#include <algorithm>
#include <iterator>
#include <ranges>

namespace tokwatch {
namespace {

struct Run {
    std::vector<LimitSample> samples; ///< newest first, the present number in front
    bool hasFallen = false;           ///< what came before the oldest was more
};

/// What belongs to the same run of the window as the present number.
Run runBefore(const LimitSample& present, std::span<const LimitSample> samples) {
    Run run{{present}, false};
    for (const LimitSample& sample : std::views::reverse(samples)) {
        if (sample.moment >= run.samples.back().moment) continue; // a clock was ahead
        if (!haveSameReset(sample, present)) break;
        const double later = run.samples.back().usedFraction;
        run.hasFallen = sample.usedFraction > later + fractionTolerance;
        if (run.hasFallen) break;
        // What is more by less than that is the same.
        run.samples.push_back(
            {sample.moment, std::min(sample.usedFraction, later), sample.resetsAt});
    }
    return run;
}

} // namespace

std::optional<BurnUp> burnUp(const LimitWindow& window, Date fetchedAt,
                             std::span<const LimitSample> samples, Date now) {
    const std::optional<LimitSample> present = sampleOf(window, fetchedAt);
    if (!present || !window.resetsAt) return std::nullopt;
    if (*window.resetsAt <= std::max(now, present->moment)) return std::nullopt;
    if (LimitAge::isOld(window, fetchedAt, now)) return std::nullopt;
    const Run run = runBefore(*present, samples);
    if (run.samples.size() < 2) return std::nullopt;

    const Date first = run.samples.back().moment;
    BurnUp course{first,
                  *window.resetsAt,
                  {},
                  present->moment - first,
                  run.samples.size(),
                  LimitBarModel(window, now).pace};
    if (window.duration) {
        course.begin = std::min(first, *window.resetsAt - Seconds{*window.duration});
        if (course.begin < first && !run.hasFallen) course.points.push_back({course.begin, 0});
    }
    for (const LimitSample& sample : std::views::reverse(run.samples))
        course.points.push_back({sample.moment, sample.usedFraction});
    return course;
}

} // namespace tokwatch
