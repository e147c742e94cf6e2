#pragma once

#include "Tests/Support/LogLines.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TokwatchCore/Records/RecordCoding.h"
#include "TokwatchCore/Support/Date.h"

#include <QProcess>

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace tokwatch::testing {

struct ProgramResult {
    int status = -1; ///< exit status
    std::string out;
    std::string err;
};

/// Runs a program to its end with an environment of PATH, TZ=UTC and `environment` alone, so that
/// nothing of the user's reaches it.
inline ProgramResult runProgram(const std::vector<std::string>& command,
                                const std::vector<std::string>& environment = {}) {
    QStringList arguments;
    for (const std::string& each : command)
        arguments.append(QString::fromStdString(each));
    QStringList variables{"PATH=/usr/bin:/bin", "TZ=UTC"};
    for (const std::string& each : environment)
        variables.append(QString::fromStdString(each));
    QProcess program;
    program.setEnvironment(variables);
    program.setStandardInputFile(QProcess::nullDevice());
    program.start(arguments.takeFirst(), arguments);
    program.waitForFinished(-1);
    return {program.exitCode(), program.readAllStandardOutput().toStdString(),
            program.readAllStandardError().toStdString()};
}

/// Runs the program in a world of its own.
class CommandTest : public ::testing::Test {
  protected:
    ProgramResult tokwatch(std::vector<std::string> arguments,
                           const std::vector<std::string>& environment = {}) const {
        arguments.insert(arguments.begin(), TOKWATCH_PROGRAM);
        return runProgram(arguments, environment);
    }
    /// With the test's own home, data directory and settings.
    ProgramResult here(std::vector<std::string> arguments) const {
        for (const std::string& option : {std::string("--home"), (world / "home").string(),
                                          std::string("--data-dir"), (world / "data").string()})
            arguments.push_back(option);
        return tokwatch(arguments, {"HOME=" + (world / "home").string(),
                                    "XDG_CONFIG_HOME=" + (world / "config").string()});
    }
    Json json(std::vector<std::string> arguments) const {
        arguments.emplace_back("--json");
        const ProgramResult result = here(std::move(arguments));
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_THAT(result.err, ::testing::IsEmpty());
        return parseJson(result.out);
    }
    void writeToday(const std::string& name, const std::string& id) const {
        ClaudeResponse response{id};
        response.timestamp = formattedNow();
        world.write("home/.claude/projects/p/" + name, response.line());
    }
    static std::string formattedNow() {
        return encode(systemNow(), DateCoding::iso8601).get<std::string>();
    }
    std::filesystem::path database() const { return world / "data/Tokwatch/usage.sqlite"; }

    TemporaryDirectory world;
};

/// Whether this is what an error is to be.
inline bool isOneLine(const std::string& text) {
    return text.starts_with("tokwatch: ") && std::count(text.begin(), text.end(), '\n') == 1 &&
           text.ends_with('\n');
}

} // namespace tokwatch::testing
