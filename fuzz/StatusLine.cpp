#include "Tokwatch/CommandLine/Assistant/AssistantLine.h"
#include "Tokwatch/CommandLine/Assistant/LocalReading.h"
#include "Tokwatch/CommandLine/Assistant/SessionStatus.h"
#include "TokwatchCore/Records/RecordCoding.h"
#include "fuzz/Target.h"

#include <algorithm>

namespace tokwatch::fuzzing {
namespace {

/// What an assistant tells, twice: what was stored of the first is known to the second.
void runStatusLine(std::string_view input) {
    std::optional<SessionStatus> status;
    try {
        status = SessionStatus::decode(input, now);
    } catch (const nlohmann::json::exception&) {
        require(false, "what is told is read, or is nothing");
    }
    AssistantFacts facts{status, std::nullopt, std::nullopt};
    if (status) {
        require(!status->contextUsed || (*status->contextUsed >= 0 && *status->contextUsed <= 1),
                "the used context is a fraction");
        require(!status->costUSD || *status->costUSD >= 0, "a cost is one");
        require(status->asOf <= now, "nothing is told of the future");
        facts.limits = withLocalReading(std::nullopt, status->limits, now);
        if (facts.limits) {
            const Json stored = encode(*facts.limits);
            require(encode(decode<ProviderLimits>(parseJson(jsonText(stored)))) == stored,
                    "what was told is read from the store as it was put there");
            require(!withLocalReading(facts.limits, status->limits, now),
                    "what is told again is no news");
        }
    }
    const Terminal plain(stdout, stderr, false, false);
    const std::vector<LinePart> parts(allCases<LinePart>.begin(), allCases<LinePart>.end());
    const std::string line = assistantLine(facts, parts, PlainSettings(), plain, now);
    require(!line.empty(), "there is a line");
    require(std::ranges::none_of(line, [](unsigned char c) { return c < 0x20 || c == 0x7F; }),
            "no text commands the terminal");
    parseJson(jsonText(assistantJson(facts)));
}

const Targets statusLine{{"status-line", runStatusLine}};

} // namespace
} // namespace tokwatch::fuzzing
