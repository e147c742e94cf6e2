#pragma once

#include "Tests/Support/Testing.h"

#include <cstdint>
#include <cstdio>

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

    std::string line() const {
        return R"({"parentUuid":null,"isSidechain":false,"sessionId":")" + session +
               R"(","message":{"model":")" + model + R"(","id":")" + id +
               R"(","role":"assistant",)" +
               (stopReason.empty() ? "" : R"("stop_reason":)" + stopReason + ",") +
               R"("usage":{"input_tokens":)" + std::to_string(input) + R"(,"output_tokens":)" +
               std::to_string(output) + R"(}},"type":"assistant","timestamp":")" + timestamp +
               "\"}\n";
    }
};

struct CodexLog {
    static std::string session(const std::string& id) {
        return R"({"timestamp":"2026-03-10T12:00:00Z","type":"session_meta","payload":{"id":")" +
               id + "\"}}\n";
    }
    static std::string model(const std::string& name) {
        return R"({"timestamp":"2026-03-10T12:00:00Z","type":"turn_context","payload":{"model":")" +
               name + "\"}}\n";
    }
    static std::string usage(const std::string& responseID, std::int64_t input, std::int64_t output,
                             const std::string& timestamp = "2026-03-10T12:00:00Z") {
        return R"({"timestamp":")" + timestamp +
               R"(","type":"token_usage_record","payload":{"response_id":")" + responseID +
               R"(","usage":{"input_tokens":)" + std::to_string(input) + R"(,"output_tokens":)" +
               std::to_string(output) + "}}}\n";
    }
    static std::string limits(double sessionPercent,
                              const std::string& timestamp = "2026-03-10T12:00:00Z") {
        return R"({"timestamp":")" + timestamp +
               R"(","type":"event_msg","payload":{"type":"token_count","rate_limits":{"primary":{"used_percent":)" +
               std::to_string(sessionPercent) +
               R"(,"window_minutes":300,"resets_at":1773147600}}}})" + "\n";
    }
};

/// A Grok session document with `turns` turns of one model, a minute apart.
inline std::string grokDocument(const std::string& session, int turns,
                                const std::string& model = "grok-4") {
    std::string document = R"({"sessionId":")" + session + R"(","turns":[)";
    for (int turn = 1; turn <= turns; ++turn) {
        char ended[64];
        std::snprintf(ended, sizeof ended, "2026-03-10T12:%02d:00Z", turn);
        document +=
            std::string(turn > 1 ? "," : "") + R"({"turnNumber":)" + std::to_string(turn) +
            R"(,"endedAt":")" + ended + R"(","modelUsage":{")" + model +
            R"(":{"inputTokens":100,"cachedReadTokens":40,"outputTokens":7,"costUsdTicks":25000000000}}})";
    }
    return document + "]}";
}

} // namespace tokwatch::testing
