#include "Platform/System/FileAccess.h"
#include "TokwatchCore/Ingestion/ClaudeLogParser.h"
#include "TokwatchCore/Ingestion/CodexLogParser.h"
#include "TokwatchCore/Ingestion/GrokUsageParser.h"
#include "TokwatchCore/Ingestion/JSONLTail.h"
#include "TokwatchCore/Records/RecordCoding.h"
#include "fuzz/Target.h"

#include <charconv>
#include <cmath>
#include <fstream>

namespace tokwatch::fuzzing {
namespace {

/// Whether sums of the numbers in it may exceed 64 bits, which stops the program, as it should.
bool hasAbsurdCounts(std::string_view text) {
    constexpr double absurd = 1e18; // six of them are in range
    const auto isPart = [](char c) { return (c >= '0' && c <= '9') || c == '.'; };
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (!isPart(text[at]) || (at > 0 && isPart(text[at - 1]))) continue;
        double number = 0;
        const auto [end, error] =
            std::from_chars(text.data() + at, text.data() + text.size(), number);
        if (error == std::errc{} && number >= absurd) return true;
    }
    return false;
}

std::vector<std::string_view> linesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    for (std::size_t end = 0; (end = text.find('\n')) != std::string_view::npos;) {
        std::string_view line = text.substr(0, end);
        if (line.ends_with('\r')) line.remove_suffix(1);
        lines.push_back(line);
        text.remove_prefix(end + 1);
    }
    return lines;
}

void checkEvent(const UsageEvent& event, ProviderID provider) {
    require(event.provider == provider, "an event is of its log's provider");
    require(std::isfinite(unixSeconds(event.timestamp)), "an event has a time");
    // A count beyond 64 bits would have stopped this.
    require(event.tokens.total() == event.tokens.uncachedInput + event.tokens.cacheRead +
                                        event.tokens.cacheWrite() + event.tokens.output,
            "a total is of all but the reasoning");
    require(!event.reportedCostUSD || std::isfinite(*event.reportedCostUSD), "a cost is a number");
}

/// A line that another reader takes is not refused: no countable response is lost to our grammar.
void checkVerdict(std::string_view line, LineVerdict verdict) {
    if (verdict == LineVerdict::cut && line.find('\0') == std::string_view::npos)
        require(!Json::accept(line), "a line that is JSON is not taken for one that was cut");
}

void runClaude(std::string_view input) {
    if (hasAbsurdCounts(input)) return;
    ClaudeLogParser used;
    const std::string log = std::string(input) + '\n';
    for (const std::string_view line : linesOf(log)) {
        const auto parsed = used.parseLine(line);
        checkVerdict(line, used.verdict());
        require(parsed.has_value() == (used.verdict() == LineVerdict::counted),
                "what is counted is an event");
        ClaudeLogParser fresh;
        require(fresh.parse(line) == (parsed ? std::optional(parsed->event) : std::nullopt),
                "a line does not depend on those before it");
        if (!parsed) continue;
        checkEvent(parsed->event, ProviderID::claude);
        require(parsed->event.tokens.total() > 0, "what is counted has tokens");
    }
}

void checkLimits(const ProviderLimits& limits) {
    require(!limits.windows.empty(), "limits have windows");
    for (const LimitWindow& window : limits.windows)
        require(window.usedFraction >= 0 && window.usedFraction <= 1, "a fraction is one");
    const Json stored = encode(limits);
    require(encode(decode<ProviderLimits>(parseJson(jsonText(stored)))) == stored,
            "limits of a log are read from the store as they were put there");
}

void runCodex(std::string_view input) {
    if (hasAbsurdCounts(input)) return;
    CodexLogParser whole;
    std::map<std::string, std::string> context; // as a cursor carries it from pass to pass
    const std::string log = std::string(input) + '\n';
    for (const std::string_view line : linesOf(log)) {
        CodexLogParser next;
        next.context = context;
        const auto parsed = whole.parse(line);
        require(next.parse(line) == parsed && next.verdict() == whole.verdict(),
                "a line says the same in another pass");
        require(next.context == whole.context, "the context is all that is carried on");
        context = next.context;
        checkVerdict(line, whole.verdict());
        if (!parsed) continue;
        if (const auto* event = std::get_if<UsageEvent>(&parsed->value)) {
            checkEvent(*event, ProviderID::codex);
            require(event->tokens.uncachedInput >= 0, "what was cached is no part of it");
        } else {
            checkLimits(std::get<ProviderLimits>(parsed->value));
        }
    }
}

void runGrok(std::string_view input) {
    if (hasAbsurdCounts(input)) return;
    const GrokDocument document = GrokUsageParser::read(input);
    require(document.isWhole || (document.events.empty() && document.untimed == 0),
            "half a document has no usage");
    for (const UsageEvent& event : document.events) {
        checkEvent(event, ProviderID::grok);
        require(event.dedupKey.starts_with(std::string(event.sessionID) + '#') &&
                    event.dedupKey.ends_with('#' + std::string(event.model)),
                "a key names session, turn and model");
    }
}

/// The file as a pass lists it now.
LogFile listed(const std::filesystem::path& file) {
    return {file.string(), fileAttributes(file)};
}

/// Reads on until there is nothing more, as passes do.
void readOn(const std::filesystem::path& file, std::optional<FileCursor>& cursor,
            std::int64_t window, std::vector<std::string>& lines) {
    TailBuffer buffer;
    while (true) {
        const JSONLTail::Result read = JSONLTail::read(listed(file), cursor, window, buffer);
        require(!read.reset, "a file that grew is not begun anew");
        for (const std::string_view line : read.lines)
            lines.emplace_back(line);
        cursor = read.cursor;
        if (read.bytesRead == 0) return;
    }
}

/// A file that grows while it is read, cut anywhere, in windows of any size.
void runTail(std::string_view input) {
    Choices choices(input);
    const std::int64_t window = choices.byte();
    const std::size_t where = choices.pair();
    const std::string_view text = choices.rest();
    const std::size_t cut = where % (text.size() + 1);
    const std::filesystem::path file = scratchFile("log.jsonl");
    std::vector<std::string> lines;
    std::optional<FileCursor> cursor;
    writeFile(file, text.substr(0, cut));
    readOn(file, cursor, window, lines);
    std::ofstream(file, std::ios::binary | std::ios::app) << text.substr(cut);
    readOn(file, cursor, window, lines);
    const auto expected = linesOf(text);
    require(std::ranges::equal(lines, expected), "each line is read once, and whole");
    require(cursor->offset == static_cast<std::int64_t>(text.rfind('\n') + 1),
            "the cursor stands behind the last whole line");
    writeFile(file, text.substr(0, cut));
    if (static_cast<std::int64_t>(cut) < cursor->offset) {
        TailBuffer buffer;
        require(JSONLTail::read(listed(file), cursor, window, buffer).reset,
                "a file that shrank is begun anew");
    }
}

const Targets logs{{"claude", runClaude},
                   {"codex", runCodex},
                   {"grok", runGrok},
                   {"tail", runTail}};

} // namespace
} // namespace tokwatch::fuzzing
