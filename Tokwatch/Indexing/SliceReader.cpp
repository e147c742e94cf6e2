#include "Tokwatch/Indexing/SliceReader.h"

#include "TokwatchCore/Ingestion/GrokUsageParser.h"
#include "TokwatchCore/Ingestion/LogDocument.h"
#include "TokwatchCore/Support/CheckedArithmetic.h"

#include <algorithm>
#include <charconv>
#include <exception>
#include <system_error>
#include <utility>

namespace tokwatch {
namespace {

/// How much of its buffer a reader keeps from one file to the next: most logs are smaller.
constexpr std::size_t keptBytes = 2'097'152;

constexpr const char* providerEntry = "provider";
constexpr const char* sizeEntry = "size";
constexpr const char* modifiedEntry = "mtime";
constexpr const char* lastTurnEntry = "lastTurn";

// No response stays open across a line that is stepped over: its cursor would stand before it.
static_assert(SliceEvents::mostReadAgain <= longestLine);

std::optional<std::string> entry(const FileCursor& cursor, const char* key) {
    const auto found = cursor.context.find(key);
    if (found == cursor.context.end()) return std::nullopt;
    return found->second;
}

/// The turn in "session#turn#model".
std::int64_t turnOf(const UsageEvent& event) {
    std::int64_t turn = 0;
    const std::string_view rest =
        std::string_view(event.dedupKey).substr(event.sessionID.view().size() + 1);
    std::from_chars(rest.data(), rest.data() + rest.size(), turn);
    return turn;
}

bool isShortage(const std::error_code& failure) {
    return failure == std::errc::too_many_files_open ||
           failure == std::errc::too_many_files_open_in_system ||
           failure == std::errc::not_enough_memory;
}

/// A line from the future, as a clock that was set back since leaves it, would be the newest for as
/// long as that takes.
ProviderLimits datedNoLaterThan(Date now, ProviderLimits limits) {
    if (limits.fetchedAt <= now) return limits;
    limits.fetchedAt = now;
    for (LimitWindow& window : limits.windows)
        window.source = LimitSource::local(now);
    return limits;
}

} // namespace

bool replaceIfNewer(std::optional<ProviderLimits>& known, ProviderLimits reading) {
    if (known && known->fetchedAt > reading.fetchedAt) return false;
    known = std::move(reading);
    return true;
}

bool isChangedDocument(const LogFile& file, const std::optional<FileCursor>& cursor) {
    return !cursor || cursor->inode != file.attributes.inode ||
           entry(*cursor, sizeEntry) != std::to_string(file.attributes.size) ||
           entry(*cursor, modifiedEntry) != std::to_string(file.attributes.modified);
}

SliceReader::SliceReader(const std::vector<PendingFile>& pendingFiles, Clock clock)
    : files(pendingFiles), now(std::move(clock)) {}

void SliceReader::begin(std::size_t file) {
    present = file;
    log = files[file].file;
    isRead = false;
    reached.reset();
    given.reset();
    events.clear();
    buffer.shrink(keptBytes);
}

std::optional<Slice> SliceReader::next() {
    if (isRead) return std::nullopt;
    const PendingFile& pending = files[present];
    const auto path = [&pending] { return pending.file.path; };
    const SumOrigin origin(path);
    Slice slice;
    try {
        slice = read(pending);
    } catch (const std::system_error& error) {
        slice = {};
        slice.isShortage = isShortage(error.code());
        // No failure where it is gone: another pass finds it where it is.
        if (!isGone(error.code()))
            slice.failure = slice.isShortage ? error.code().message() : error.what();
    } catch (const std::exception& error) {
        slice = {};
        slice.failure = error.what();
    }
    slice.file = present;
    const bool isDocument = traits(pending.provider).logFormat == LogFormat::grokDocument;
    isRead = isDocument || !slice.failure.empty() || isAtEnd(slice.bytes);
    return slice;
}

/// Of what the file was when it was last read: since it was listed, slices may have been written in
/// which its last lines go on.
bool SliceReader::isAtEnd(std::int64_t bytes) const {
    return bytes == 0 || reached->offset >= log.attributes.size;
}

Slice SliceReader::read(const PendingFile& pending) {
    switch (traits(pending.provider).logFormat) {
    case LogFormat::claudeLines:
    case LogFormat::codexLines:
        return readLines(pending);
    case LogFormat::grokDocument:
        return readDocument(pending);
    case LogFormat::none:
        break;
    }
    return {};
}

Slice SliceReader::readLines(const PendingFile& pending) {
    const Date begun = now();
    JSONLTail::Result read =
        readSlice(log, reached ? reached : pending.cursor, JSONLTail::sliceBytes, buffer);
    log.attributes = read.file;
    // What is open was read from a file that is gone.
    if (read.reset) events.clear();
    Slice slice;
    if (traits(pending.provider).logFormat == LogFormat::codexLines) {
        parseCodex(slice, read);
    } else {
        parseClaude(read);
    }
    slice.bytes = read.bytesRead;
    read.cursor.context[providerEntry] = rawValue(pending.provider);
    reached = std::move(read.cursor);
    slice.cursor = *reached;
    const bool isLast = isAtEnd(slice.bytes);
    const SliceEvents::End end{begun, now(), modifiedAt(log)};
    slice.events = events.take(reached->offset, isLast ? std::optional(end) : std::nullopt);
    if (const std::optional<SliceEvents::Open> open = events.open()) {
        slice.cursor.offset = open->firstLine;
        if (isLast) slice.heldUntil = open->completeAt;
    }
    const std::optional<FileCursor>& before = given ? given : pending.cursor;
    slice.cursorMoved = !before || slice.cursor != *before;
    given = slice.cursor;
    return slice;
}

void SliceReader::parseClaude(const JSONLTail::Result& read) {
    const std::int64_t start = read.cursor.offset - read.bytesRead;
    for (const std::string_view line : read.lines) {
        if (std::optional<ClaudeLine> parsed = claude.parseLine(line))
            events.add(std::move(*parsed), start + (line.data() - buffer.data()));
    }
}

void SliceReader::parseCodex(Slice& slice, JSONLTail::Result& read) {
    CodexLogParser parser;
    parser.context = std::move(read.cursor.context);
    const Date latest = now();
    for (const std::string_view line : read.lines) {
        std::optional<CodexLine> parsed = parser.parse(line);
        if (!parsed) continue;
        if (auto* event = std::get_if<UsageEvent>(&parsed->value)) {
            events.add(std::move(*event));
        } else {
            auto& limits = std::get<ProviderLimits>(parsed->value);
            replaceIfNewer(slice.limits, datedNoLaterThan(latest, std::move(limits)));
        }
    }
    read.cursor.context = std::move(parser.context);
}

Slice SliceReader::readDocument(const PendingFile& pending) {
    const LogDocument document = readLogDocument(pending.file.path);
    const FileAttributes& attributes = document.attributes;
    Slice slice;
    slice.events = GrokUsageParser::parse(document.text);
    slice.bytes = attributes.size;
    slice.cursor = {pending.file.path, attributes.inode, attributes.size, {}};

    // Every turn is given each time, older ones, too: one may end late, or gain a model. The keys
    // see to it that nothing counts twice, so the last turn is for people who look.
    std::int64_t lastTurn = 0;
    for (const UsageEvent& event : slice.events)
        lastTurn = std::max(lastTurn, turnOf(event));
    slice.cursor.context = {{providerEntry, std::string(rawValue(ProviderID::grok))},
                            {sizeEntry, std::to_string(attributes.size)},
                            {modifiedEntry, std::to_string(attributes.modified)},
                            {lastTurnEntry, std::to_string(lastTurn)}};
    slice.cursorMoved = !pending.cursor || slice.cursor != *pending.cursor;
    return slice;
}

} // namespace tokwatch
