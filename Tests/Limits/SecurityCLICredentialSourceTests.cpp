#include "TokwatchCore/Limits/SecurityCLICredentialSource.h"

#include "Tests/Limits/ProcessState.h"
#include "Tests/Support/EventLoop.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/WaitFor.h"

#include <gmock/gmock.h>

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <optional>
#include <sys/stat.h>
#include <sys/wait.h>

namespace tokwatch {
namespace {

constexpr Seconds never{100};
constexpr Seconds soon{0.3};

/// What a read came to: a secret or the reason for none.
struct Outcome {
    std::optional<std::string> secret;
    std::optional<CredentialError::Reason> failure;
    friend bool operator==(const Outcome&, const Outcome&) = default;
};

Outcome outcomeOf(const std::function<std::string()>& read) {
    try {
        return {read(), std::nullopt};
    } catch (const CredentialError& error) {
        return {std::nullopt, error.reason};
    }
}

bool hasChildren() {
    return ::waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD;
}

struct KeychainTool : ::testing::Test {
    testing::TemporaryDirectory directory;

    KeychainTool() { testing::needEventLoop(); }

    std::filesystem::path tool(const std::string& script) {
        const auto file = directory.write("tool", "#!/bin/sh\n" + script + "\n");
        ::chmod(file.c_str(), 0700);
        return file;
    }
    Outcome run(const std::filesystem::path& executable, Seconds timeout = never) {
        SecurityCLICredentialSource source(executable, timeout);
        return outcomeOf(
            [&] { return testing::waitFor(source.keychainSecret("Claude Code-credentials")); });
    }
};

TEST_F(KeychainTool, TellsItsOutcome) {
    struct Case {
        const char* script;
        Outcome outcome;
        Seconds timeout = never;
    };
    const auto secret = [](std::string text) { return Outcome{std::move(text), std::nullopt}; };
    const auto failure = [](CredentialError::Reason why) { return Outcome{std::nullopt, why}; };
    const Case cases[]{
        {R"(test "$*" = "find-generic-password -s Claude Code-credentials -w" && echo secret)",
         secret("secret")},
        {R"(printf 'two\nlines \r\n\n\r')", secret("two\nlines ")},
        {"echo", secret("")},
        {"true", secret("")},
        {"cat; echo nothing to read", secret("nothing to read")},
        {"echo secret; echo complaint >&2", secret("secret")},
        {"echo secret; sleep 100 &", secret("secret")},
        {"echo secret; exit 44", failure(CredentialError::notFound)},
        {"echo secret; exit 1", failure(CredentialError::denied)},
        {"kill -9 $$", failure(CredentialError::denied)},
        {R"(printf 'a\377b')", failure(CredentialError::malformed)},
        {"echo secret; sleep 100", failure(CredentialError::denied), soon},
        {"trap '' TERM INT HUP; while :; do sleep 100; done", failure(CredentialError::denied),
         soon},
        {"echo secret; exec >&- 2>&-; sleep 100", failure(CredentialError::denied), soon},
        {"exec cat /dev/zero", failure(CredentialError::malformed)},
    };
    run(tool("true")); // what Qt sets up once for its first process
    const std::size_t descriptors = testing::openDescriptors();
    for (const Case& each : cases) {
        EXPECT_EQ(run(tool(each.script), each.timeout), each.outcome) << each.script;
        EXPECT_FALSE(hasChildren()) << each.script;
        EXPECT_EQ(testing::openDescriptors(), descriptors) << each.script;
    }
}

TEST_F(KeychainTool, MayPrintALot) {
    const Outcome outcome = run(tool("head -c 10000000 /dev/zero | tr '\\0' x"));
    EXPECT_EQ(outcome.secret, std::string(10'000'000, 'x'));
}

TEST_F(KeychainTool, IsDeniedWhenItCannotBeStarted) {
    const Outcome denied{std::nullopt, CredentialError::denied};
    EXPECT_EQ(run(directory / "missing"), denied);
    EXPECT_EQ(run(directory.path()), denied);
    EXPECT_EQ(run(directory.write("not executable", "#!/bin/sh\n")), denied);
    EXPECT_FALSE(hasChildren());
}

TEST_F(KeychainTool, LeavesNothingRunningWhenItsTimeIsUp) {
    run(tool("sleep 100 & echo $! > " + (directory / "child").string() + "; wait"), soon);
    const pid_t child = std::stoi(directory.read("child"));
    // It was told to end, which takes its moment; it is not ours to wait for.
    pollfd ended{static_cast<int>(::syscall(SYS_pidfd_open, child, 0)), POLLIN, 0};
    constexpr int longEnough = 10'000;
    EXPECT_TRUE(ended.fd < 0 || ::poll(&ended, 1, longEnough) == 1);
    if (ended.fd >= 0) ::close(ended.fd);
}

TEST_F(KeychainTool, EndsWithItsSource) {
    auto source = std::make_unique<SecurityCLICredentialSource>(tool("sleep 100"), never);
    auto reading = source->keychainSecret("any");
    testing::settle();
    source.reset();
    EXPECT_FALSE(hasChildren());
    EXPECT_EQ(outcomeOf([&] { return testing::waitFor(std::move(reading)); }),
              (Outcome{std::nullopt, CredentialError::denied}));
}

TEST_F(KeychainTool, RunsWhileTheMainThreadGoesOn) {
    SecurityCLICredentialSource source(
        tool("while ! test -e " + (directory / "go").string() + "; do sleep 0.01; done; echo ok"),
        never);
    auto first = source.keychainSecret("a");
    auto second = source.keychainSecret("b");
    testing::settle();
    directory.write("go", "");
    EXPECT_EQ(testing::waitFor(std::move(first)), "ok");
    EXPECT_EQ(testing::waitFor(std::move(second)), "ok");
}

TEST(CredentialFile, IsReadOrTellsWhyNot) {
    const testing::TemporaryDirectory directory;
    SecurityCLICredentialSource source;
    const auto read = [&](const std::filesystem::path& file) {
        return outcomeOf([&] { return source.fileData(file); });
    };
    const Outcome notFound{std::nullopt, CredentialError::notFound};
    const Outcome denied{std::nullopt, CredentialError::denied};
    const std::string bytes("a\0\377\n", 4);
    EXPECT_EQ(read(directory.write("file", bytes)), (Outcome{bytes, std::nullopt}));
    EXPECT_EQ(read(directory.write("empty", "")), (Outcome{"", std::nullopt}));
    EXPECT_EQ(read(directory / "missing"), notFound);
    EXPECT_EQ(read(directory / "file/below"), notFound);
    EXPECT_EQ(read(directory.path()), denied);
    EXPECT_EQ(read("/dev/zero"), denied);
    EXPECT_EQ(read(directory.write("huge", std::string(2'000'000, ' '))), denied);
    ::mkfifo((directory / "pipe").c_str(), 0600);
    EXPECT_EQ(read(directory / "pipe"), denied);
    std::filesystem::create_symlink("loop", directory / "loop");
    EXPECT_EQ(read(directory / "loop"), denied);
}

} // namespace
} // namespace tokwatch
