#include "TokwatchCore/Limits/ClaudeUsageResponse.h"
#include "TokwatchCore/Limits/CodexUsageResponse.h"
#include "TokwatchCore/Limits/HTTPAnswer.h"
#include "TokwatchCore/Records/RecordCoding.h"
#include "fuzz/Target.h"

#include <cmath>
#include <optional>
#include <set>

namespace tokwatch::fuzzing {
namespace {

/// What a service says is within what the store takes, and is shown.
void checkAnswer(const ProviderLimits& limits) {
    std::set<std::string> ids;
    for (const LimitWindow& window : limits.windows) {
        require(window.usedFraction >= 0 && window.usedFraction <= 1, "a fraction is one");
        require(!window.id.empty() && !window.label.empty(), "a window has its names");
        require(ids.insert(window.id).second, "no two windows have one id");
    }
    const Json stored = encode(limits);
    require(encode(decode<ProviderLimits>(parseJson(jsonText(stored)))) == stored,
            "limits are read from the store as they were put there");
}

template<typename Response>
std::optional<Response> answerIn(std::string_view body) {
    try {
        return Response::decode(body);
    } catch (const DecodingError&) {
        return std::nullopt;
    }
}

void runClaudeAnswer(std::string_view input) {
    if (const auto answer = answerIn<ClaudeUsageResponse>(input))
        checkAnswer({std::nullopt, answer->windows, answer->credits, ProviderStatus::ok, {}});
}

void runCodexAnswer(std::string_view input) {
    if (const auto answer = answerIn<CodexUsageResponse>(input))
        checkAnswer({answer->plan, answer->windows, std::nullopt, ProviderStatus::ok, {}});
}

constexpr std::int64_t bodyBound = 2'048;

/// None where it is refused.
std::optional<HTTPResponse> answered(std::string_view bytes, std::size_t cut) {
    HTTPAnswer answer(bodyBound);
    try {
        answer.add(bytes.substr(0, cut));
        answer.add(bytes.substr(cut));
        answer.end();
    } catch (const HTTPError&) {
        return std::nullopt;
    }
    return answer.take();
}

/// Bytes come in pieces, and how they are cut says nothing.
void runHttpAnswer(std::string_view input) {
    const auto whole = answered(input, 0);
    for (std::size_t cut = 1; cut < input.size(); cut += 1 + input.size() / 16) {
        const auto pieces = answered(input, cut);
        require(pieces.has_value() == whole.has_value(), "pieces are answered as the whole is");
        if (!whole) continue;
        require(pieces->status == whole->status && pieces->headers == whole->headers &&
                    pieces->body == whole->body,
                "pieces say what the whole says");
    }
    if (!whole) return;
    require(whole->status >= 200 && whole->status <= 999, "an answer has a status");
    require(std::ssize(whole->body) <= bodyBound, "a body has a bound");
}

const Targets answers{{"claude-answer", runClaudeAnswer},
                      {"codex-answer", runCodexAnswer},
                      {"http-answer", runHttpAnswer}};

} // namespace
} // namespace tokwatch::fuzzing
