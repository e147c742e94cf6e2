#include "Platform/System/WorkLease.h"
#include "Tests/Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

namespace tokwatch {
namespace {

using testing::TemporaryDirectory;

TEST(WorkLease, IsHeldByOneAtATimeAndByADesktopBeforeFollowers) {
    const TemporaryDirectory data;
    using Rank = WorkLease::Rank;
    std::optional<WorkLease> first(std::in_place, data.path(), Rank::follower);
    WorkLease second(data.path(), Rank::follower);
    EXPECT_TRUE(first->renew());
    EXPECT_FALSE(second.renew());
    {
        WorkLease desktop(data.path(), Rank::desktop);
        EXPECT_FALSE(desktop.renew()) << "it has said that it is here, and waits for the lease";
        EXPECT_FALSE(second.renew());
        EXPECT_FALSE(first->renew()) << "a follower makes room";
        EXPECT_TRUE(desktop.renew());
        WorkLease another(data.path(), Rank::desktop);
        EXPECT_FALSE(another.renew());
    }
    EXPECT_TRUE(first->renew());
    {
        WorkLease guest(data.path(), Rank::guest);
        EXPECT_FALSE(guest.renew());
        EXPECT_FALSE(second.renew());
        first.reset();
        EXPECT_FALSE(guest.renew()) << "another wants it";
        EXPECT_TRUE(second.renew());
        guest.setRank(Rank::desktop);
        EXPECT_FALSE(guest.renew());
        EXPECT_FALSE(second.renew());
        EXPECT_TRUE(guest.renew());
    }
    EXPECT_TRUE(second.renew());

    std::filesystem::remove(data / "work.lock");
    WorkLease later(data.path(), Rank::follower);
    EXPECT_TRUE(later.renew());
    EXPECT_FALSE(second.renew()) << "the lease is on the file that is there";
    WorkLease unheld(data / "missing", Rank::follower);
    EXPECT_TRUE(unheld.renew()) << "where it cannot be had it is everybody's";
}

TEST(WorkLease, IsStoodInForWhileItsHolderGivesNoSignOfLife) {
    const TemporaryDirectory data;
    WorkLease desktop(data.path(), WorkLease::Rank::desktop);
    WorkLease first(data.path(), WorkLease::Rank::follower);
    WorkLease second(data.path(), WorkLease::Rank::follower);
    for (int looks = 0; looks < 40; ++looks) {
        EXPECT_TRUE(desktop.renew());
        EXPECT_FALSE(first.renew() || second.renew());
    }
    bool worked = false;
    for (int looks = 0; looks < 16; ++looks)
        worked = first.renew();
    EXPECT_TRUE(worked && first.isStandIn());
    for (int looks = 0; looks < 16; ++looks)
        worked = second.renew();
    EXPECT_FALSE(worked) << "one is enough";
    EXPECT_TRUE(desktop.renew());
    EXPECT_FALSE(first.renew() || first.isStandIn());
}

} // namespace
} // namespace tokwatch
