#pragma once

#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/Testing.h"
#include "Tokwatch/Report/ResponseFiles.h"
#include "TokwatchCore/Support/ISO8601.h"

namespace tokwatch::testing {

inline Date at(const std::string& text) {
    return *parseISO8601(text);
}

/// A line of Claude's about a response.
struct Line {
    std::string id;
    std::int64_t output = 1;
    std::string time = "2026-03-10T12:00:00Z";
    std::string session = "s";
    std::string directory = "/src/app";
    std::string stop = "\"end_turn\"";

    std::string text() const {
        return R"({"type":"assistant","cwd":")" + directory + R"(","sessionId":")" + session +
               R"(","timestamp":")" + time + R"(","message":{"id":")" + id +
               R"(","model":"claude-opus-4-1","stop_reason":)" + stop +
               R"(,"usage":{"output_tokens":)" + std::to_string(output) + "}}}\n";
    }
};

/// A home with logs.
struct LogsTest : Test {
    void write(const std::string& name, const std::vector<Line>& lines) const {
        std::string all;
        for (const Line& line : lines)
            all += line.text();
        home.write(".claude/projects/" + name, all);
    }

    const TemporaryDirectory home;
};

} // namespace tokwatch::testing
