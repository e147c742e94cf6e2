#include "TokwatchCore/Limits/SecurityCLICredentialSource.h"

#include "Tests/Limits/Fakes.h"
#include "Tests/Support/EventLoop.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/WaitFor.h"

#include <gmock/gmock.h>

#include <cerrno>
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
        std::string script;
        Outcome outcome;
        Seconds timeout = never;
    };
    const auto secret = [](std::string text) { return Outcome{std::move(text), std::nullopt}; };
    const auto failure = [](CredentialError::Reason why) { return Outcome{std::nullopt, why}; };
    const Case cases[]{
        {R"(test "$*" = "find-generic-password -s Claude Code-credentials -w" && echo secret)",
         secret("secret")},
        {R"(printf 'two\nlines \r\n\n\r')", secret("two\nlines ")},
        {"true", secret("")},
        {"echo secret; echo complaint >&2", secret("secret")},
        {"echo secret; sleep 100 &", secret("secret")},
        {"echo secret; exit 44", failure(CredentialError::notFound)},
        {"echo secret; exit 1", failure(CredentialError::denied)},
        {R"(printf 'a\377b')", failure(CredentialError::malformed)},
        {"echo secret; sleep 100", failure(CredentialError::denied), soon},
        {"trap '' TERM INT HUP; while :; do sleep 100; done", failure(CredentialError::denied),
         soon},
        {"echo secret; exec >&- 2>&-; sleep 100", failure(CredentialError::denied), soon},
        {"head -c 1000000 /dev/zero | tr '\\0' x", secret(std::string(1'000'000, 'x'))},
        {"exec cat /dev/zero", failure(CredentialError::malformed)},
    };
    run(tool("true")); // what Qt sets up once for its first process
    const std::size_t descriptors = testing::openDescriptors();
    for (const Case& each : cases) {
        EXPECT_EQ(run(tool(each.script), each.timeout), each.outcome) << each.script;
        EXPECT_FALSE(hasChildren()) << each.script;
        EXPECT_EQ(testing::openDescriptors(), descriptors) << each.script;
    }
    for (const auto& unusable :
         {directory / "missing", directory.path(), directory.write("data", "#!/bin/sh\n")})
        EXPECT_EQ(run(unusable), failure(CredentialError::denied)) << unusable;
    EXPECT_FALSE(hasChildren());
}

TEST(CredentialFile, IsReadOrTellsWhyNot) {
    const testing::TemporaryDirectory home;
    SecurityCLICredentialSource source;
    home.write("file", "text");
    using enum CredentialError::Reason;
    for (const auto& [file, outcome] : {std::pair{"file", Outcome{"text", {}}},
                                        {"missing", {{}, notFound}},
                                        {"file/below", {{}, notFound}},
                                        {".", {{}, denied}}})
        EXPECT_EQ(outcomeOf([&] { return source.fileData(home / file); }), outcome) << file;
}

} // namespace
} // namespace tokwatch
