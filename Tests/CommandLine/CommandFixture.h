#pragma once

#include "Tests/Support/LogLines.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TokwatchCore/Records/RecordCoding.h"
#include "TokwatchCore/Store/UsageSummary.h"
#include "TokwatchCore/Support/Date.h"

#include <QProcess>

namespace tokwatch::testing {

struct ProgramResult {
    int status = -1; ///< exit status
    std::string out;
    std::string err;
};

/// Runs a program to its end with an environment of PATH, TZ=UTC and `environment` alone, so that
/// nothing of the user's reaches it. Without an input there is nothing to be read.
inline ProgramResult runProgram(const std::vector<std::string>& command,
                                const std::vector<std::string>& environment = {},
                                const std::string& input = {}) {
    QStringList arguments;
    for (const std::string& each : command)
        arguments.append(QString::fromStdString(each));
    QStringList variables{"PATH=/usr/bin:/bin", "TZ=UTC"};
    for (const std::string& each : environment)
        variables.append(QString::fromStdString(each));
    QProcess program;
    program.setEnvironment(variables);
    if (input.empty()) program.setStandardInputFile(QProcess::nullDevice());
    program.start(arguments.takeFirst(), arguments);
    if (!input.empty()) program.write(input.data(), std::ssize(input));
    program.closeWriteChannel();
    program.waitForFinished(-1);
    return {program.exitCode(), program.readAllStandardOutput().toStdString(),
            program.readAllStandardError().toStdString()};
}

/// Whether this is what an error is to be.
inline bool isOneLine(const std::string& text) {
    return text.starts_with("tokwatch: ") && text.find('\n') == text.size() - 1;
}

/// Runs the program in a world of its own.
struct CommandTest : Test {
    ProgramResult tokwatch(std::vector<std::string> arguments,
                           const std::vector<std::string>& environment = {},
                           const std::string& input = {}) const {
        arguments.insert(arguments.begin(), TOKWATCH_PROGRAM);
        return runProgram(arguments, environment, input);
    }
    /// With the test's own home, data directory and settings.
    ProgramResult here(std::vector<std::string> arguments, const std::string& input = {}) const {
        const bool hasCommand = !arguments.empty() && arguments[0] != "preferences";
        if (hasCommand)
            arguments.insert(arguments.end(), {"--home", (world / "home").string(), "--data-dir",
                                               (world / "data").string()});
        return tokwatch(
            arguments,
            {"HOME=" + (world / "home").string(), "XDG_CONFIG_HOME=" + (world / "config").string()},
            input);
    }
    int makeDemo(const char* place, const char* days = "90") const {
        return runProgram({"python3", TOKWATCH_DEMO_HOME, "--days", days, (world / place).string()})
            .status;
    }
    Json json(std::vector<std::string> arguments) const {
        arguments.emplace_back("--json");
        const ProgramResult result = here(std::move(arguments));
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_THAT(result.err, IsEmpty());
        return parseJson(result.out);
    }
    /// With this exit status, one line about it, which holds the sentence, and no output.
    static void expectFailure(const ProgramResult& result, int status, const char* sentence = "") {
        EXPECT_EQ(result.status, status);
        EXPECT_EQ(result.out, "");
        EXPECT_TRUE(isOneLine(result.err)) << result.err;
        EXPECT_THAT(result.err, HasSubstr(sentence));
    }
    void expectRefused(const char* words, const char* sentence = "") const {
        SCOPED_TRACE(words);
        std::vector<std::string> arguments;
        for (const QString& word : QString(words).split(' '))
            arguments.push_back(word.toStdString());
        expectFailure(tokwatch(arguments, {"HOME=" + world.path().string()}), 2, sentence);
    }
    void writeToday(const std::string& name, const std::string& id, int responses = 1) const {
        std::string lines;
        for (int i = 0; i < responses; ++i)
            lines +=
                ClaudeResponse{.id = id + std::to_string(i), .timestamp = formattedNow()}.line();
        world.write("home/.claude/projects/p/" + name, lines);
    }
    static std::string formattedNow() {
        return encode(systemNow(), DateCoding::iso8601).get<std::string>();
    }
    std::filesystem::path database() const { return world / "data/Tokwatch/usage.sqlite"; }

    TemporaryDirectory world;
};

} // namespace tokwatch::testing
