#pragma once

#include "Tests/CommandLine/ProgramRunner.h"
#include "Tests/Support/LogLines.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TokwatchCore/Records/RecordCoding.h"
#include "TokwatchCore/Support/Date.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace tokwatch::testing {

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
