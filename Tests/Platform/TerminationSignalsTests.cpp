#include "Platform/Linux/TerminationSignals.h"

#include <gtest/gtest.h>

#include <unistd.h>

namespace tokwatch {
namespace {

TEST(TerminationSignals, BoundTheEndOfWhatHangs) {
    TerminationSignals::boundTheEnd();
    const unsigned left = ::alarm(0); // and it does not come
    EXPECT_GT(left, 0U);
    EXPECT_LE(left, TerminationSignals::patience.count());
}

} // namespace
} // namespace tokwatch
