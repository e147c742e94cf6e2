#include "KivoMenuBar/ScrollStepper.h"

#include <gmock/gmock.h>

#include <vector>

namespace kivo {
namespace {

struct Motion {
    double at; ///< seconds
    int delta;
    int steps;
};

TEST(ScrollStepper, TurnsMotionIntoSteps) {
    struct Case {
        const char* what;
        std::vector<Motion> motions;
        int notch = -120;
    };
    const Case cases[] = {
        {"a notch each", {{1, -120, 1}, {1.1, -120, 1}, {9, 120, -1}}},
        {"hosts that count notches", {{1, 1, 1}, {1.1, -1, -1}, {1.2, 2, 2}}, 1},
        {"hosts that count twice", {{1, 2, 1}, {1.1, 2, 1}, {1.2, -2, -1}}, 2},
        {"unknown hosts", {{1, -120, 1}, {9, 1, 1}, {9.1, 120, -1}}, 0},
        {"fine wheels add up", {{1, -50, 0}, {1.1, -50, 0}, {1.2, -50, 1}, {1.3, -100, 1}}},
        {"a pause forgets", {{1, -100, 0}, {1.31, -100, 0}, {1.4, -20, 1}}},
        {"a turn forgets", {{1, -110, 0}, {1.1, 60, 0}, {1.2, 60, -1}, {1.3, -110, 0}}},
        {"several notches at once", {{1, -360, 3}, {1.1, 240, -2}}},
        {"nothing", {{1, 0, 0}, {1.1, -120, 1}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        ScrollStepper stepper;
        for (const Motion& motion : c.motions)
            EXPECT_EQ(stepper.steps(motion.delta, c.notch, ScrollStepper::Seconds(motion.at)),
                      motion.steps)
                << "at " << motion.at;
    }
}

} // namespace
} // namespace kivo
