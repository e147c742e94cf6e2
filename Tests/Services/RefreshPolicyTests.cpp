#include "Tokwatch/Limits/RefreshPolicy.h"

#include <gtest/gtest.h>

#include <optional>

namespace tokwatch {
namespace {

const Date noon = dateFromUnixSeconds(1'768'000'000);

std::optional<Date> ago(std::optional<double> seconds) {
    if (!seconds) return std::nullopt;
    return noon - Seconds{*seconds};
}

TEST(RefreshPolicy, FetchesOfItsOwnAccordWhenBothSpacingsHavePassed) {
    struct Case {
        std::optional<double> attemptAgo;
        std::optional<double> successAgo;
        bool fetches;
    };
    for (const Case& c : {Case{std::nullopt, std::nullopt, true},
                          {60, std::nullopt, false},
                          {60.001, std::nullopt, true},
                          {299, 299, false},
                          {300, 300, true},
                          {61, 299.9, false},
                          {30, 400, false},
                          {std::nullopt, 10, false},
                          {-5, -5, true}}) // the clock was set back
        EXPECT_EQ(RefreshPolicy::shouldFetch(ago(c.attemptAgo), ago(c.successAgo), noon), c.fetches)
            << c.attemptAgo.value_or(-1) << " " << c.successAgo.value_or(-1);
}

} // namespace
} // namespace tokwatch
