#include "RefreshPolicy.h"

#include <gtest/gtest.h>

#include <optional>

namespace tokwatch {
namespace {

const Date noon = dateFromUnixSeconds(1'768'000'000);

std::optional<Date> ago(std::optional<double> seconds) {
    if (!seconds) return std::nullopt;
    return noon - Seconds{*seconds};
}

TEST(RefreshPolicy, DoublesTheDelayOnlyAfterFailuresThatPass) {
    struct Case {
        ProviderStatus status;
        double current;
        double next;
    };
    for (const Case& c : {Case{ProviderStatus::unreachable, 300, 600},
                          {ProviderStatus::unreachable, 600, 1200},
                          {ProviderStatus::unreachable, 1200, 1800},
                          {ProviderStatus::unreachable, 1800, 1800},
                          {ProviderStatus::rateLimited, 300, 600},
                          {ProviderStatus::rateLimited, 100, 300},
                          {ProviderStatus::ok, 1800, 300},
                          {ProviderStatus::signInNeeded, 1800, 300},
                          {ProviderStatus::accessDenied, 600, 300},
                          {ProviderStatus::unavailable, 600, 300}})
        EXPECT_EQ(RefreshPolicy::nextDelay(c.status, Seconds{c.current}).count(), c.next)
            << rawValue(c.status) << " after " << c.current;
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
