#include "Tests/Support/CapturedLog.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tokwatch/Indexing/IndexerService.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <gmock/gmock.h>

#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>

namespace tokwatch {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;
using testing::TemporaryDirectory;

/// Runs the script that makes demo homes; its exit status.
int makeDemoHome(const std::string& arguments) {
    const std::string command = std::string(TOKWATCH_DEMO_HOME) + " --quiet " + arguments;
    const int status = std::system((command + " 2>/dev/null").c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

class DemoHomeTest : public ::testing::Test {
  protected:
    int make(const std::string& arguments) { return makeDemoHome(arguments + " " + home.string()); }

    IndexOutcome indexInto(const std::shared_ptr<UsageStore>& store) const {
        IndexerService indexer(store, ProviderLocations{home}, Calendar::utc, systemNow);
        return indexer.index().result();
    }
    static std::shared_ptr<UsageStore> newStore() {
        return std::make_shared<UsageStore>(":memory:");
    }

    TemporaryDirectory directory;
    std::filesystem::path home = directory / "home";
    testing::CapturedLog log;
};

TEST_F(DemoHomeTest, HasSomethingOfEverything) {
    ASSERT_EQ(make("--end 2026-03-10 --days 30"), 0);
    const Date evening = *parseISO8601("2026-03-10T18:00:00Z");
    const auto store = newStore();
    EXPECT_TRUE(indexInto(store).codexLimitsUpdated);
    EXPECT_THAT(log.lines(), IsEmpty());

    const UsageSummary summary =
        store->summary(30, evening, Calendar::utc(), PriceTable::bundled());
    EXPECT_THAT(summary.tools, SizeIs(3));
    EXPECT_EQ(summary.perDay.front().day, summary.windowEnd); // somebody works today
    EXPECT_GT(summary.perDay.size(), 20U);
    EXPECT_TRUE(summary.hasUnknownPrices);
    EXPECT_GT(summary.costByType.other, 0); // and one model is known by its reported cost alone
    EXPECT_GE(summary.models.size(), 8U);
    for (const UsageSummary::ModelRow& model : summary.models)
        EXPECT_NE(model.model, "unknown");
    EXPECT_TRUE(ProviderLocations{home}.isPresent(ProviderID::cursor));

    const ProviderLimits limits = store->limits(ProviderID::codex).value();
    ASSERT_THAT(limits.windows, SizeIs(2));
    for (const LimitWindow& window : limits.windows)
        EXPECT_GT(window.resetsAt.value(), limits.fetchedAt) << window.id;
}

TEST_F(DemoHomeTest, KeepsItsPastWhenItIsMadeAgainLater) {
    const auto seenDaily = newStore();
    for (const char* end : {"2026-03-09", "2026-03-10"}) {
        ASSERT_EQ(make(std::string("--days 12 --end ") + end), 0);
        indexInto(seenDaily);
    }
    const auto seenOnce = newStore();
    indexInto(seenOnce);
    const auto pastDays = [](UsageStore& store) {
        const Date evening = *parseISO8601("2026-03-08T18:00:00Z");
        return store.summary(10, evening, Calendar::utc(), PriceTable()).perDay;
    };
    EXPECT_EQ(pastDays(*seenDaily), pastDays(*seenOnce));
    EXPECT_GT(pastDays(*seenOnce).size(), 5U);
}

TEST_F(DemoHomeTest, LeavesOtherPeoplesFilesAlone) {
    directory.write("home/.claude/projects/p/mine.jsonl", "mine");
    EXPECT_EQ(make(""), 1);
    EXPECT_EQ(directory.read("home/.claude/projects/p/mine.jsonl"), "mine");

    // A directory of its own that leads elsewhere.
    const std::filesystem::path other = directory / "other";
    ASSERT_EQ(makeDemoHome("--days 3 " + other.string()), 0);
    std::filesystem::remove_all(other / ".claude");
    std::filesystem::create_directory_symlink(home / ".claude", other / ".claude");
    EXPECT_EQ(makeDemoHome("--days 4 " + other.string()), 1);
    EXPECT_EQ(directory.read("home/.claude/projects/p/mine.jsonl"), "mine");
    EXPECT_FALSE(std::filesystem::exists(home / ".claude/projects/-home-dev-notes"));

    EXPECT_EQ(make("--days 0"), 2);
    EXPECT_EQ(make("--end tomorrow"), 2);
}

} // namespace
} // namespace tokwatch
