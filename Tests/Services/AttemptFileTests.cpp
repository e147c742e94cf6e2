#include "Tokwatch/Limits/AttemptFile.h"

#include "Tests/Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <thread>

namespace tokwatch {
namespace {

const Date noon = dateFromUnixSeconds(1'768'000'000.125);

AttemptRecord recordOf(AttemptLedger& ledger) {
    return ledger.edit(ProviderID::codex, [](AttemptRecord&) { return false; });
}

bool claim(AttemptLedger& ledger) {
    bool isGranted = false;
    ledger.edit(ProviderID::codex, [&](AttemptRecord& record) {
        isGranted = record.wait(false, noon) <= Seconds{0};
        record.lastAttempt = noon;
        record.isAnswered = false;
        return isGranted;
    });
    return isGranted;
}

TEST(AttemptFile, IsWhatAllProcessesKnow) {
    const testing::TemporaryDirectory directory;
    const AttemptRecord noted{noon, noon - Seconds{1}, ProviderStatus::rateLimited, Seconds{1200},
                              true};
    AttemptFile(directory.path()).edit(ProviderID::codex, [&](AttemptRecord& record) {
        record = noted;
        return true;
    });
    AttemptFile other(directory.path());
    EXPECT_EQ(recordOf(other), noted);
    for (const char* name : {"attempts.json", "attempts.lock"}) {
        struct stat status {};
        ::stat((directory / name).c_str(), &status);
        EXPECT_EQ(status.st_mode & 07777, 0600u) << name;
    }
}

TEST(AttemptFile, GrantsAnAttemptToOneOfThoseWhoWantItAtOnce) {
    const testing::TemporaryDirectory directory;
    for (int round = 0; round < 20; ++round) {
        std::filesystem::remove(directory / "attempts.json");
        std::atomic<int> granted = 0;
        std::vector<std::jthread> threads;
        for (int each = 0; each < 8; ++each)
            threads.emplace_back([&] {
                AttemptFile file(directory.path(), std::chrono::hours(1));
                if (claim(file)) ++granted;
            });
        threads.clear();
        EXPECT_EQ(granted, 1);
    }
}

TEST(AttemptFile, GoesOnWithWhateverStandsInItsPlace) {
    const testing::TemporaryDirectory directory;
    const auto text = [](const std::string& content) {
        return [content](const std::filesystem::path& path) { std::ofstream(path) << content; };
    };
    const auto pipe = [](const std::filesystem::path& path) { ::mkfifo(path.c_str(), 0600); };
    const auto folder = [](const std::filesystem::path& path) {
        std::filesystem::create_directories(path / "below");
    };
    const auto link = [](const std::filesystem::path& path) {
        std::filesystem::create_symlink("missing/file", path);
    };
    const auto heldLock = [](const std::filesystem::path& path) {
        const int file = ::open(path.c_str(), O_RDWR | O_CREAT, 0600);
        ::flock(file, LOCK_EX); // until the process ends
    };
    struct Case {
        const char* name;
        const char* file;
        std::function<void(const std::filesystem::path&)> make;
    };
    const std::string lastYear = R"({"codex": {"lastAttempt": 700000000, "isAnswered": true}})";
    const Case cases[]{
        {"empty", "attempts.json", text("")},
        {"not JSON", "attempts.json", text("{\"codex\"")},
        {"another type", "attempts.json", text("[]")},
        {"a missing key", "attempts.json", text(lastYear)},
        {"a wrong type", "attempts.json", text(R"({"codex": {"lastAttempt": "noon"}})")},
        {"huge", "attempts.json", text(std::string(10'000'000, ' '))},
        {"nested", "attempts.json", text(std::string(60'000, '['))},
        {"a pipe", "attempts.json", pipe},
        {"a directory", "attempts.json", folder},
        {"a link", "attempts.json", link},
        {"a pipe as lock", "attempts.lock", pipe},
        {"a directory as lock", "attempts.lock", folder},
        {"a link as lock", "attempts.lock", link},
        {"a lock that somebody keeps", "attempts.lock", heldLock},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.name);
        const std::filesystem::path data = directory / each.name;
        std::filesystem::create_directory(data);
        each.make(data / each.file);
        AttemptFile file(data, std::chrono::milliseconds(0));
        EXPECT_TRUE(claim(file));
        EXPECT_FALSE(claim(file));
        EXPECT_EQ(recordOf(file).lastAttempt, noon);
    }
    AttemptFile nowhere(directory / "missing");
    EXPECT_TRUE(claim(nowhere));
    EXPECT_FALSE(claim(nowhere));
}

} // namespace
} // namespace tokwatch
