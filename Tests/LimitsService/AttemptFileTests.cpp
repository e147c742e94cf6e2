#include "Tokwatch/Limits/AttemptFile.h"

#include "Tests/Support/CapturedLog.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/Testing.h"

#include <fcntl.h>
#include <sys/file.h>

#include <atomic>
#include <thread>

namespace tokwatch::testing {

const Date noon = dateFromUnixSeconds(1'768'000'000.125);

AttemptRecord recordOf(AttemptLedger& ledger) {
    return ledger.edit(ProviderID::codex, [](AttemptRecord&) { return false; }).record;
}

bool claim(AttemptLedger& ledger) {
    bool isGranted = false;
    const AttemptLedger::Entry entry = ledger.edit(ProviderID::codex, [&](AttemptRecord& record) {
        isGranted = record.wait(false, noon) <= Seconds{0};
        record.lastAttempt = noon;
        record.isAnswered = false;
        return isGranted;
    });
    return isGranted && entry.isShared;
}

TEST(AttemptFile, GrantsAnAttemptToOneOfThoseWhoWantItAtOnce) {
    const TemporaryDirectory directory;
    for (int round = 0; round < 20; ++round) {
        std::filesystem::remove(directory / "attempts.json");
        std::atomic<int> granted = 0;
        std::vector<std::jthread> threads;
        for (int each = 0; each < 8; ++each)
            threads.emplace_back([&] {
                AttemptFile file(directory.path(), {}, std::chrono::hours(1));
                if (claim(file)) ++granted;
            });
        threads.clear();
        EXPECT_EQ(granted, 1);
    }
}

TEST(AttemptFile, GoesOnWithWhateverStandsInItsPlace) {
    const TemporaryDirectory directory;
    const auto goesOnIn = [&](const std::filesystem::path& data) {
        const std::filesystem::path refuge = directory / "run/below";
        std::filesystem::remove_all(refuge);
        AttemptFile file(data, refuge, std::chrono::milliseconds(0));
        EXPECT_TRUE(claim(file)) << data;
        AttemptFile other(data, refuge, std::chrono::milliseconds(0));
        EXPECT_FALSE(claim(other)) << data;
        EXPECT_EQ(recordOf(other).lastAttempt, noon);
    };
    for (const char* nonsense : {"{\"codex\"", R"({"codex": {"lastAttempt": "noon"}})",
                                 R"({"codex": {"lastAttempt": 700000000, "isAnswered": true}})"}) {
        directory.write("attempts.json", nonsense);
        goesOnIn(directory.path());
    }
    std::filesystem::remove(directory / "attempts.json");
    std::filesystem::create_symlink("missing/file", directory / "attempts.json");
    goesOnIn(directory.path());
    directory.write("no lock/attempts.lock/below", "");
    goesOnIn(directory / "no lock");
    const std::filesystem::path kept = directory.write("kept/attempts.lock", "");
    ::flock(::open(kept.c_str(), O_RDWR), LOCK_EX); // until the process ends
    goesOnIn(directory / "kept");
    goesOnIn(directory / "missing");
}

TEST(AttemptFile, GrantsNothingThatTheOthersCouldNotKnow) {
    const TemporaryDirectory directory;
    directory.write("attempts.json/below", "");
    const CapturedLog log;
    AttemptFile file(directory.path());
    EXPECT_FALSE(claim(file));
    EXPECT_FALSE(claim(file));
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("cannot note when")));
    std::filesystem::remove_all(directory / "attempts.json");
    AttemptFile other(directory.path());
    EXPECT_TRUE(claim(other));
}

} // namespace tokwatch::testing
