#include "Tests/Support/LogLines.h"

#include <cstdio>

namespace tokwatch::testing {

std::string ClaudeResponse::line() const {
    return R"({"parentUuid":null,"isSidechain":false,"sessionId":")" + session +
           R"(","message":{"model":")" + model + R"(","id":")" + id + R"(","role":"assistant",)" +
           (stopReason.empty() ? "" : R"("stop_reason":)" + stopReason + ",") +
           R"("usage":{"input_tokens":)" + std::to_string(input) + R"(,"output_tokens":)" +
           std::to_string(output) + R"(}},"type":"assistant","timestamp":")" + timestamp + "\"}\n";
}

std::string CodexLog::session(const std::string& id) {
    return R"({"timestamp":"2026-03-10T12:00:00Z","type":"session_meta","payload":{"id":")" + id +
           "\"}}\n";
}

std::string CodexLog::model(const std::string& name) {
    return R"({"timestamp":"2026-03-10T12:00:00Z","type":"turn_context","payload":{"model":")" +
           name + "\"}}\n";
}

std::string CodexLog::usage(const std::string& responseID, std::int64_t input, std::int64_t output,
                            const std::string& timestamp) {
    return R"({"timestamp":")" + timestamp +
           R"(","type":"token_usage_record","payload":{"response_id":")" + responseID +
           R"(","usage":{"input_tokens":)" + std::to_string(input) + R"(,"output_tokens":)" +
           std::to_string(output) + "}}}\n";
}

std::string CodexLog::limits(double sessionPercent, const std::string& timestamp) {
    return R"({"timestamp":")" + timestamp +
           R"(","type":"event_msg","payload":{"type":"token_count","rate_limits":{"primary":{"used_percent":)" +
           std::to_string(sessionPercent) + R"(,"window_minutes":300,"resets_at":1773147600}}}})" +
           "\n";
}

std::string grokDocument(const std::string& session, int turns, const std::string& model) {
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
