#include "Tokwatch/Views/Popover/ChartScale.h"

#include <gmock/gmock.h>

#include <limits>

namespace tokwatch {
namespace {

using ::testing::DoubleEq;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<double> ticks(double most, double smallest = 0.01) {
    return ChartScale::reaching(most, smallest).ticks;
}

TEST(ChartScale, TicksAreRoundAndReachTheTop) {
    struct Case {
        double most;
        double smallest;
        std::vector<double> ticks;
    };
    for (const Case& c : {
             Case{8.2, 0.01, {5, 10}},
             {10, 0.01, {5, 10}},
             {10.01, 0.01, {5, 10, 15}},
             {6, 0.01, {2, 4, 6}},
             {7.5, 0.01, {2.5, 5, 7.5}},
             {1.1, 0.01, {0.5, 1, 1.5}},
             {123'456, 1, {50'000, 100'000, 150'000}},
             {2.6e9, 1, {1e9, 2e9, 3e9}},
             // No tick between two amounts that can be.
             {7, 1, {5, 10}},
             {70, 1, {25, 50, 75}},
             {2, 1, {1, 2}},
             {1, 1, {1}},
             {0.07, 0.01, {0.05, 0.1}},
             {0.001, 0.01, {0.01}},
         }) {
        const ChartScale scale = ChartScale::reaching(c.most, c.smallest);
        EXPECT_THAT(scale.ticks, ::testing::Pointwise(::testing::DoubleEq(), c.ticks)) << c.most;
        EXPECT_GE(scale.top(), c.most);
    }
}

TEST(ChartScale, HasTwoOrThreeTicksForAnyAmount) {
    for (double most = 0.02; most < 1e15; most *= 1.07) {
        const std::vector<double> found = ticks(most);
        EXPECT_TRUE(found.size() == 2 || found.size() == 3) << most;
        EXPECT_GE(found.back(), most * (1 - 1e-9));
        EXPECT_LT(found[found.size() - 2], most) << "the top is higher than it need be";
    }
}

TEST(ChartScale, HasNoTicksForNothing) {
    for (const double most : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN(),
                              std::numeric_limits<double>::infinity()})
        EXPECT_THAT(ticks(most), IsEmpty()) << most;
}

} // namespace
} // namespace tokwatch
