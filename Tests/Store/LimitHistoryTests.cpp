#include "TokwatchCore/Store/LimitHistory.h"

#include "Tests/Support/CapturedLog.h"
#include "Tests/Support/OrdinaryUser.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TokwatchCore/Store/UsageStore.h"

#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <filesystem>
#include <functional>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
namespace fs = std::filesystem;
using enum ProviderID;

const Date start = dateFromUnixSeconds(1'768'000'000);

Date after(double minutes) {
    return start + Seconds{minutes * 60};
}

/// A result of so many minutes after the start, of a window that resets at minute 300.
ProviderLimits result(double minutes, double used, double resetMinutes = 300,
                      LimitSource source = LimitSource::live()) {
    ProviderLimits limits;
    limits.windows = {{"session", "Session", used, 18'000, after(resetMinutes), source}};
    limits.fetchedAt = after(minutes);
    return limits;
}

struct LimitHistoryTest : ::testing::Test {
    /// The minute and the percentage of each sample that is read.
    std::vector<std::pair<double, double>> samples(double now = 200) {
        std::vector<std::pair<double, double>> found;
        SamplesByProvider all =
            history.samples({{claude, result(now, 0.9)}}, after(now)).value_or(SamplesByProvider());
        for (const LimitSample& sample : all[claude]["session"])
            found.emplace_back(Seconds(sample.moment - start).count() / 60,
                               sample.usedFraction * 100);
        return found;
    }
    /// Does it behind the history's back.
    void execute(const char* sql) const {
        sqlite3* db = nullptr;
        sqlite3_open(file.c_str(), &db);
        EXPECT_EQ(sqlite3_exec(db, sql, nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(db);
        sqlite3_close(db);
    }

    testing::TemporaryDirectory home;
    fs::path file = home / "Tokwatch/history.sqlite";
    LimitHistory history{file, std::chrono::milliseconds{0}};
};

TEST_F(LimitHistoryTest, KeepsWhatDiffersEveryFiveMinutesAtMost) {
    EXPECT_THAT(samples(), IsEmpty());
    EXPECT_FALSE(fs::exists(file)) << "a look makes nothing";
    history.record(result(1, 0.25, 300, LimitSource::stale(start)), claude);
    EXPECT_FALSE(fs::exists(file)) << "nor does what is shown again";
    history.record(result(1, 0.125), claude);
    history.record(result(3, 0.25), claude);
    history.record(result(6, 0.5), claude);
    history.record(result(20, 0.5, 300.9), claude);
    history.record(result(20, 0.75, 300, LimitSource::local(after(15))), claude);
    history.record(result(30, 0.625), codex);
    history.record(result(22, 1), claude);
    history.record(result(23, 0, 600), claude);
    EXPECT_THAT(samples(), ElementsAre(std::pair(1, 12.5), std::pair(6, 50), std::pair(15, 75),
                                       std::pair(22, 100), std::pair(23, 0)))
        << "another window begins at once";
    EXPECT_THAT(samples(300), IsEmpty()) << "it has reset";
    EXPECT_EQ(fs::status(file).permissions(), fs::perms{0600});
    EXPECT_THAT(std::distance(fs::directory_iterator(file.parent_path()), {}), 1)
        << "no side files stay";
}

TEST_F(LimitHistoryTest, ForgetsAfterNinetyDaysAndNotBecauseOfAClockThatWasAhead) {
    constexpr double day = 24 * 60;
    history.record(result(0, 0.25), claude);
    history.record(result(400 * day, 0.5), claude);
    EXPECT_THAT(samples(), ElementsAre(std::pair(0, 25)));
    history.record(result(89 * day, 0.5), claude);
    EXPECT_THAT(samples(), ElementsAre(std::pair(0, 25)));
    history.record(result(91 * day, 0.75), claude);
    EXPECT_THAT(samples(), IsEmpty());
}

TEST_F(LimitHistoryTest, HearsFromTheStoreOfEachResultThatWasStored) {
    UsageStore store(":memory:");
    recordLimits(store, std::make_shared<LimitHistory>(file));
    store.setLimits(result(10, 0.25), claude);
    EXPECT_TRUE(store.setLimitsIfNewer(result(20, 0.5), claude, after(20)));
    EXPECT_FALSE(store.setLimitsIfNewer(result(15, 0.75), claude, after(20)));
    EXPECT_THAT(samples(), ElementsAre(std::pair(10, 25), std::pair(20, 50)));
}

TEST_F(LimitHistoryTest, SaysOnceWhatIsWrongWithTheFileAndGoesOn) {
    sqlite3* other = nullptr;
    struct Case {
        const char* reason;
        std::function<void()> spoil;
        std::function<void()> repair;
    };
    const auto remove = [this] { fs::remove_all(file); };
    const std::vector<Case> cases{
        {"not a database",
         [this] { home.write("Tokwatch/history.sqlite", std::string(5000, 'x')); }, remove},
        {"something else", [this] { fs::create_directory(file); }, remove},
        {"something else", [this] { ::mkfifo(file.c_str(), 0600); }, remove},
        {"symbolic", [this] { fs::create_symlink("history.sqlite", file); }, remove},
        {"no such table", [this] { execute("CREATE TABLE a(b); PRAGMA user_version = 7"); },
         remove},
        {"another program's", [this] { execute("CREATE TABLE samples(b)"); }, remove},
        {"locked",
         [&] {
             sqlite3_open(file.c_str(), &other);
             sqlite3_exec(other, "CREATE TABLE a(b); BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
         },
         [&] {
             sqlite3_close(other);
             fs::remove_all(file);
         }},
    };
    fs::create_directory(file.parent_path());
    for (const Case& each : cases) {
        each.spoil();
        {
            LimitHistory spoilt(file, std::chrono::milliseconds{0});
            const testing::CapturedLog log;
            spoilt.record(result(10, 0.25), claude);
            spoilt.record(result(20, 0.5), claude);
            const auto none = spoilt.samples({{claude, result(20, 0.5)}}, after(20));
            EXPECT_EQ(none.value_or(SamplesByProvider()), SamplesByProvider()) << each.reason;
            EXPECT_THAT(log.lines(), ElementsAre(::testing::HasSubstr(each.reason)));
        }
        each.repair();
        history.record(result(10, 0.25), claude);
        EXPECT_THAT(samples(), ElementsAre(std::pair(10, 25))) << "after " << each.reason;
        fs::remove(file);
    }
}

TEST_F(LimitHistoryTest, ReadsWhatCannotBeWritten) {
    history.record(result(10, 0.25), claude);
    execute("PRAGMA user_version = 2");
    fs::permissions(home.path(), fs::perms{0755});
    fs::permissions(file.parent_path(), fs::perms{0555});
    fs::permissions(file, fs::perms{0444});
    {
        const testing::OrdinaryUser user;
        const testing::CapturedLog log;
        EXPECT_THAT(samples(), ElementsAre(std::pair(10, 25)));
        EXPECT_THAT(log.lines(), IsEmpty());
        history.record(result(20, 0.5), claude);
        EXPECT_THAT(log.lines(), ElementsAre(::testing::HasSubstr("readonly")));
    }
    fs::permissions(file.parent_path(), fs::perms::owner_all);
    fs::permissions(file, fs::perms{0600});
    history.record(result(20, 0.5), claude);
    EXPECT_EQ(samples().size(), 2U) << "a newer version is used as it is";
}

} // namespace
} // namespace tokwatch
