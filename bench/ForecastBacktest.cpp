// How near a forecast comes to the moment at which a limit is used up, for simulated users whose
// windows are, and how often it cries wolf for those whose windows are not. Prints the tables of
// docs/forecast.md; the same figures at each run.
//   forecast-backtest [SEED]

#include "TokwatchCore/Presentation/Forecast.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <iterator>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace tokwatch {
namespace {

constexpr double minute = 60;
constexpr double hour = 3600;
constexpr double session = 5 * hour;
constexpr double week = 7 * 24 * hour;
constexpr std::array<double, 3> marks{0.25, 0.5, 0.75};

/// A way to tell from a window so far where it leads.
using Rule = std::optional<Forecast> (*)(const BurnUp&, Date);

/// By the use in the last tenth of the window, 20 minutes at least.
std::optional<Forecast> recentForecast(const BurnUp& course, Date now) {
    const BurnUp::Point& present = course.points.back();
    const Seconds span = std::max<Seconds>((course.resetsAt - course.begin) / 10, Seconds{1200});
    const Date from = present.moment - span;
    const auto later = std::ranges::upper_bound(course.points, from, {}, &BurnUp::Point::moment);
    const BurnUp::Point then = later == course.points.begin()
                                   ? course.points.front()
                                   : BurnUp::Point{from, std::prev(later)->usedFraction};
    return forecastAt(speedBetween(then, present), course, now);
}

constexpr std::array<Rule, 2> rules{recentForecast, forecast};

/// The same numbers with any standard library, whose distributions differ.
class Dice {
  public:
    explicit Dice(std::uint64_t seed) : engine(seed) {}
    double between(double low, double high) {
        return low + (high - low) * (static_cast<double>(engine() >> 11U) * 0x1p-53);
    }
    double exponential(double mean) { return -mean * std::log(1 - between(0, 1)); }

  private:
    std::mt19937_64 engine;
};

/// What a user does in each minute of a window, in arbitrary units.
using Demand = std::vector<double>;

Demand steady(Dice& dice, double duration) {
    Demand demand;
    const double swing = dice.between(0, 0.4);
    const double period = dice.between(0.1, 0.5) * duration;
    for (double t = 0; t < duration; t += minute)
        demand.push_back(dice.between(0.7, 1.3) * (1 + swing * std::sin(6.2832 * t / period)));
    return demand;
}

/// Works for a while at a pace, pauses for a while, and works at another pace.
Demand bursty(Dice& dice, double duration, double working, double pausing) {
    Demand demand;
    bool isWorking = dice.between(0, 1) < 0.7;
    while (static_cast<double>(demand.size()) * minute < duration) {
        const double pace = isWorking ? dice.exponential(1) + 0.2 : 0;
        const double length = dice.exponential(isWorking ? working : pausing);
        demand.insert(demand.end(), static_cast<std::size_t>(length / minute) + 1, pace);
        isWorking = !isWorking;
    }
    demand.resize(static_cast<std::size_t>(duration / minute));
    return demand;
}

/// Bursts of eight to twelve hours a day; the window begins at any time of it.
Demand withNights(Dice& dice, double duration) {
    Demand demand = bursty(dice, duration, 50 * minute, 25 * minute);
    const double firstHour = dice.between(0, 24);
    const double dayLength = dice.between(8, 12);
    for (std::size_t i = 0; i < demand.size(); ++i) {
        const double hourOfDay = std::fmod(firstHour + static_cast<double>(i) / 60, 24);
        if (hourOfDay > dayLength) demand[i] = 0;
    }
    return demand;
}

struct Kind {
    const char* name;
    double duration;
    int users;
    std::function<Demand(Dice&, double)> demand;
};

std::vector<Kind> kinds() {
    return {{"steady, 5 hours", session, 40, steady},
            {"bursty, 5 hours", session, 50,
             [](Dice& dice, double d) { return bursty(dice, d, 25 * minute, 15 * minute); }},
            {"steady, week", week, 30, steady},
            {"bursty, week", week, 40,
             [](Dice& dice, double d) { return bursty(dice, d, 3 * hour, 2 * hour); }},
            {"night gaps, week", week, 40, withNights}};
}

/// The fraction used after each minute.
std::vector<double> usedBy(const Demand& demand, double scale) {
    std::vector<double> used;
    double sum = 0;
    for (const double each : demand)
        used.push_back(sum += each * scale);
    return used;
}

/// What each rule says when the window's number first reaches each mark.
struct Outcome {
    std::array<std::array<std::optional<Date>, rules.size()>, marks.size()> usedUpAt;
    std::array<bool, marks.size()> isReached{};
    double duration = 0;
    Date reset;
    std::optional<Date> truth;
};

/// The window as the application sees it: whole percentages every five minutes, resets that are
/// some seconds off, and of all that the samples that are kept.
Outcome watch(Dice& dice, double duration, const std::vector<double>& used) {
    const Date begin = dateFromUnixSeconds(1'780'000'000);
    const Date reset = begin + Seconds{duration};
    Outcome outcome{{}, {}, duration, reset, {}};
    const auto over = std::ranges::find_if(used, [](double u) { return u >= 1; });
    if (over != used.end())
        outcome.truth = begin + Seconds{minute * (1 + static_cast<double>(over - used.begin()))};
    std::vector<LimitSample> samples;
    for (double t = dice.between(0, 300); t < duration; t += 300 + dice.between(0, 5)) {
        const Date now = begin + Seconds{t};
        if (outcome.truth && now >= *outcome.truth) break;
        const double exact = used[static_cast<std::size_t>(t / minute)];
        const LimitWindow window{"w",
                                 "W",
                                 std::floor(exact * 100) / 100,
                                 duration,
                                 reset + Seconds{dice.between(-20, 20)},
                                 LimitSource::live()};
        const std::optional<BurnUp> course = burnUp(window, now, samples, now);
        for (std::size_t mark = 0; mark < marks.size(); ++mark) {
            if (window.usedFraction < marks[mark] || outcome.isReached[mark]) continue;
            outcome.isReached[mark] = true;
            for (std::size_t rule = 0; course && rule < rules.size(); ++rule)
                if (const auto said = rules[rule](*course, now))
                    outcome.usedUpAt[mark][rule] = said->usedUpAt;
        }
        const LimitSample sample = *sampleOf(window, now);
        const auto last = samples.empty() ? std::nullopt : std::optional(samples.back());
        if (isWorthKeeping(last, sample)) samples.push_back(sample);
    }
    return outcome;
}

double median(std::vector<double> values) {
    if (values.empty()) return 0;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    return *middle;
}

/// How far off, in parts of the window. "It lasts" counts as the reset.
double error(const Outcome& outcome, std::size_t mark, std::size_t rule) {
    const Date said = outcome.usedUpAt[mark][rule].value_or(outcome.reset);
    return std::abs(Seconds(said - *outcome.truth).count()) / outcome.duration;
}

void printErrors(const char* name, const std::vector<Outcome>& outcomes, bool inMinutes) {
    std::printf("| %s | %zu |", name, outcomes.size());
    for (std::size_t mark = 0; mark < marks.size(); ++mark) {
        for (std::size_t rule = 0; rule < rules.size(); ++rule) {
            std::vector<double> errors;
            for (const Outcome& outcome : outcomes)
                if (outcome.isReached[mark]) errors.push_back(error(outcome, mark, rule));
            const double part = median(errors);
            const double minutes = part * outcomes.front().duration / minute;
            if (inMinutes && minutes < 100)
                std::printf(" %.1f %%, %.0f min |", part * 100, minutes);
            else if (inMinutes)
                std::printf(" %.1f %%, %.1f h |", part * 100, minutes / 60);
            else
                std::printf(" %.1f %% |", part * 100);
        }
    }
    std::printf("\n");
}

void printSaid(const char* name, const std::vector<Outcome>& outcomes) {
    std::printf("| %s | %zu |", name, outcomes.size());
    for (std::size_t mark = 0; mark < marks.size(); ++mark) {
        for (std::size_t rule = 0; rule < rules.size(); ++rule) {
            const auto reached = std::ranges::count_if(
                outcomes, [&](const Outcome& each) { return each.isReached[mark]; });
            const auto said = std::ranges::count_if(outcomes, [&](const Outcome& each) {
                return each.usedUpAt[mark][rule].has_value();
            });
            std::printf(" %ld of %ld |", static_cast<long>(said), static_cast<long>(reached));
        }
    }
    std::printf("\n");
}

void printHead(const char* what) {
    std::printf("\n| %s | Windows |", what);
    for (const double mark : marks)
        std::printf(" %.0f %% used, recent | since start |", mark * 100);
    std::printf("\n|---|---|---|---|---|---|---|---|\n");
}

void run(std::uint64_t seed) {
    Dice dice(seed);
    std::vector<Outcome> usedUp;
    std::vector<Outcome> lasting;
    printHead("Median error");
    for (const Kind& kind : kinds()) {
        std::vector<Outcome> own;
        for (int user = 0; user < kind.users; ++user) {
            const Demand demand = kind.demand(dice, kind.duration);
            const std::vector<double> whole = usedBy(demand, 1);
            // Used up somewhere in the window …
            const double when = dice.between(0.35, 0.95);
            const double then =
                whole[static_cast<std::size_t>(when * static_cast<double>(whole.size()))];
            own.push_back(watch(dice, kind.duration, usedBy(demand, 1 / std::max(then, 1e-3))));
            // … and the same user in a window that is not.
            const double atReset = dice.between(0.5, 0.97);
            lasting.push_back(
                watch(dice, kind.duration, usedBy(demand, atReset / std::max(whole.back(), 1e-3))));
        }
        printErrors(kind.name, own, true);
        usedUp.insert(usedUp.end(), own.begin(), own.end());
    }
    printErrors("all", usedUp, false);
    printHead("Says that it runs out");
    printSaid("used up", usedUp);
    printSaid("lasting", lasting);
}

} // namespace
} // namespace tokwatch

int main(int argc, char** argv) {
    tokwatch::run(argc > 1 ? std::stoull(argv[1]) : 20'261'125);
}
