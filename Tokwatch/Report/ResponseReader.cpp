#include "Tokwatch/Report/ResponseReader.h"

#include "TokwatchCore/Ingestion/CodexLogParser.h"
#include "TokwatchCore/Ingestion/GrokUsageParser.h"
#include "TokwatchCore/Ingestion/LogDocument.h"
#include "TokwatchCore/Support/CheckedArithmetic.h"

#include <functional>
#include <stdexcept>
#include <utility>

namespace tokwatch {
namespace {

/// Bytes: as much as a core's own cache takes. Nothing is stored after a slice, as the indexer
/// does, so that they need not be large.
constexpr std::int64_t sliceBytes = 1'048'576;
/// How often a file may be replaced while it is read.
constexpr int mostReplacements = 8;

} // namespace

std::uint64_t responseKey(std::string_view dedupKey) {
    static_assert(sizeof(std::size_t) == sizeof(std::uint64_t));
    return std::hash<std::string_view>()(dedupKey);
}

std::optional<FileResponses> ResponseReader::read(ProviderID provider, const LogFile& file) {
    const auto path = [&file] { return file.path; };
    const SumOrigin origin(path);
    begin(provider);
    switch (traits(provider).logFormat) {
    case LogFormat::claudeLines:
    case LogFormat::codexLines:
        readLines(file);
        break;
    case LogFormat::grokDocument:
        readDocument(file);
        break;
    case LogFormat::none:
        break;
    }
    if (stop.stop_requested()) return std::nullopt;
    found.file = file;
    found.models = models.all();
    found.responses.shrink_to_fit();
    return std::move(found);
}

void ResponseReader::begin(ProviderID provider) {
    found = {};
    found.provider = provider;
    models = {};
    sessions = {};
    positions.clear();
}

void ResponseReader::readLines(const LogFile& file) {
    const bool isCodex = traits(found.provider).logFormat == LogFormat::codexLines;
    CodexLogParser codex;
    std::optional<FileCursor> reached;
    int replacements = 0;
    while (!stop.stop_requested() && (!reached || reached->offset < file.attributes.size)) {
        JSONLTail::Result slice = readSlice(file, reached, sliceBytes, buffer);
        if (slice.reset) {
            if (++replacements > mostReplacements)
                throw std::runtime_error("it is replaced again and again");
            begin(found.provider);
            codex.context.clear();
            codex.directory.clear();
        }
        if (slice.bytesRead == 0) break;
        for (const std::string_view line : slice.lines) {
            if (isCodex) {
                const std::optional<CodexLine> parsed = codex.parse(line);
                found.lines.add(codex.verdict());
                const auto* event = parsed ? std::get_if<UsageEvent>(&parsed->value) : nullptr;
                if (event != nullptr) add(*event, codex.directory, false);
            } else {
                const std::optional<ClaudeLine> parsed = claude.parseLine(line);
                found.lines.add(claude.verdict());
                if (parsed) add(parsed->event, parsed->directory, parsed->isUnfinished);
            }
        }
        reached = std::move(slice.cursor);
    }
    if (reached) found.readTo = reached->offset;
    if (reached && reached->offset < file.attributes.size) ++found.lines.unended;
    buffer.shrink(sliceBytes);
}

void ResponseReader::readDocument(const LogFile& file) {
    const LogDocument whole = readLogDocument(file.path);
    found.readTo = whole.attributes.size;
    const GrokDocument document = GrokUsageParser::read(whole.text);
    found.lines.add(LineVerdict::counted, std::ssize(document.events));
    found.lines.add(LineVerdict::noTime, document.untimed);
    if (!document.isWhole) found.lines.add(LineVerdict::cut);
    for (const UsageEvent& event : document.events)
        add(event, {}, false);
}

void ResponseReader::add(const UsageEvent& event, std::string_view directory, bool isUnfinished) {
    const Response response{responseKey(event.dedupKey),
                            event.timestamp,
                            event.tokens,
                            event.reportedCostUSD,
                            sessionOf(event, directory),
                            models.numberOf(event.model),
                            isUnfinished};
    const auto [position, isNew] =
        positions.try_emplace(response.key, static_cast<std::uint32_t>(found.responses.size()));
    if (isNew) {
        found.responses.push_back(response);
    } else if (traits(found.provider).logFormat != LogFormat::grokDocument) {
        // Of a document, all of which is given to the store at once, the first counts there.
        Response& known = found.responses[position->second];
        if (keep == KeepLines::all && known.tokens != response.tokens)
            found.replaced.push_back(known);
        known = response;
    }
}

std::uint32_t ResponseReader::sessionOf(const UsageEvent& event, std::string_view directory) {
    const std::uint32_t number = sessions.numberOf(event.sessionID);
    if (number == found.sessions.size())
        found.sessions.push_back({std::string(event.sessionID), {}, {}});
    FileResponses::Session& session = found.sessions[number];
    if (!directory.empty() && (session.directory.empty() || event.timestamp < session.statedAt)) {
        session.directory = directory;
        session.statedAt = event.timestamp;
    }
    return number;
}

} // namespace tokwatch
