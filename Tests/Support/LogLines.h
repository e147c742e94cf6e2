#pragma once

#include <cstdint>
#include <string>

namespace tokwatch::testing {

/// Lines as the assistants write them, for tests that need a log and not its details.
struct ClaudeResponse {
    std::string id = "msg_1";
    std::string session = "session-1";
    std::string model = "claude-opus-4-1-20250805";
    std::string timestamp = "2026-03-10T12:00:00.000Z";
    std::int64_t input = 10;
    std::int64_t output = 5;
    std::string stopReason = ""; ///< as JSON; the key is absent when empty

    std::string line() const;
};

struct CodexLog {
    static std::string session(const std::string& id);
    static std::string model(const std::string& name);
    static std::string usage(const std::string& responseID, std::int64_t input, std::int64_t output,
                             const std::string& timestamp = "2026-03-10T12:00:00Z");
    static std::string limits(double sessionPercent,
                              const std::string& timestamp = "2026-03-10T12:00:00Z");
};

/// A Grok session document with `turns` turns of one model, a minute apart.
std::string grokDocument(const std::string& session, int turns,
                         const std::string& model = "grok-4");

} // namespace tokwatch::testing
