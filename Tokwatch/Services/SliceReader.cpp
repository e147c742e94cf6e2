#include "SliceReader.h"

#include "FileAccess.h"
#include "GrokUsageParser.h"

#include <algorithm>
#include <charconv>
#include <exception>
#include <utility>

namespace tokwatch {
namespace {

constexpr const char* providerEntry = "provider";
constexpr const char* sizeEntry = "size";
constexpr const char* modifiedEntry = "mtime";
constexpr const char* lastTurnEntry = "lastTurn";

std::optional<std::string> entry(const FileCursor& cursor, const char* key) {
    const auto found = cursor.context.find(key);
    if (found == cursor.context.end()) return std::nullopt;
    return found->second;
}

/// The turn in "session#turn#model".
std::int64_t turnOf(const UsageEvent& event) {
    std::int64_t turn = 0;
    const std::string_view rest =
        std::string_view(event.dedupKey).substr(event.sessionID.size() + 1);
    std::from_chars(rest.data(), rest.data() + rest.size(), turn);
    return turn;
}

std::string readWhole(const InputFile& input, std::int64_t size) {
    std::string document(static_cast<std::size_t>(size), '\0');
    document.resize(input.read(document.data(), document.size(), 0));
    return document;
}

} // namespace

bool isChangedDocument(const LogFile& file, const std::optional<FileCursor>& cursor) {
    return !cursor || cursor->inode != file.attributes.inode ||
           entry(*cursor, sizeEntry) != std::to_string(file.attributes.size) ||
           entry(*cursor, modifiedEntry) != std::to_string(file.attributes.modified);
}

SliceReader::SliceReader(const std::vector<PendingFile>& pendingFiles) : files(pendingFiles) {}

std::optional<Slice> SliceReader::next() {
    if (at == files.size()) return std::nullopt;
    const PendingFile& pending = files[at];
    Slice slice;
    try {
        slice = pending.provider == ProviderID::grok ? readDocument(pending) : readLines(pending);
    } catch (const std::exception& error) {
        slice = {};
        slice.failure = error.what();
    }
    slice.file = at;
    const bool finished = pending.provider == ProviderID::grok || !slice.failure.empty() ||
                          slice.bytes == 0 || slice.cursor.offset >= pending.file.attributes.size;
    if (finished) {
        ++at;
        reached.reset();
        buffer.shrink(JSONLTail::sliceBytes);
    } else {
        reached = slice.cursor;
    }
    return slice;
}

Slice SliceReader::readLines(const PendingFile& pending) {
    const std::optional<FileCursor>& from = reached ? reached : pending.cursor;
    JSONLTail::Result read =
        JSONLTail::read(pending.file.path, from, JSONLTail::sliceBytes, buffer);
    Slice slice;
    positions.clear();
    if (pending.provider == ProviderID::codex) {
        parseCodex(slice, read);
    } else {
        parseClaude(slice, read);
    }
    slice.bytes = read.bytesRead;
    slice.cursor = std::move(read.cursor);
    slice.cursor.context[providerEntry] = rawValue(pending.provider);
    slice.cursorMoved = !from || slice.cursor != *from;
    return slice;
}

void SliceReader::parseClaude(Slice& slice, const JSONLTail::Result& read) {
    for (const std::string_view line : read.lines) {
        if (std::optional<UsageEvent> event = claude.parse(line)) collect(slice, std::move(*event));
    }
}

void SliceReader::parseCodex(Slice& slice, JSONLTail::Result& read) {
    CodexLogParser parser;
    parser.context = std::move(read.cursor.context);
    for (const std::string_view line : read.lines) {
        std::optional<CodexLine> parsed = parser.parse(line);
        if (!parsed) continue;
        if (auto* event = std::get_if<UsageEvent>(&*parsed)) {
            collect(slice, std::move(*event));
        } else {
            slice.limits = std::get<ProviderLimits>(std::move(*parsed));
        }
    }
    read.cursor.context = std::move(parser.context);
}

void SliceReader::collect(Slice& slice, UsageEvent event) {
    // The lines of one response repeat its key, and the last one has its final counts.
    const auto [position, isNew] = positions.try_emplace(event.dedupKey, slice.events.size());
    if (isNew) {
        slice.events.push_back(std::move(event));
    } else {
        slice.events[position->second] = std::move(event);
    }
}

Slice SliceReader::readDocument(const PendingFile& pending) {
    const InputFile input(pending.file.path);
    // Taken before the contents: a document rewritten meanwhile is seen as changed by the next
    // pass.
    const FileAttributes attributes = input.attributes();
    Slice slice;
    slice.events = GrokUsageParser::parse(readWhole(input, attributes.size));
    slice.bytes = attributes.size;
    slice.cursor = {pending.file.path, attributes.inode, attributes.size, {}};

    // Turns before the last one known are done with; the last one may still have been growing by a
    // model.
    std::int64_t lastTurn = 0;
    if (pending.cursor && pending.cursor->inode == attributes.inode) {
        const std::string known = entry(*pending.cursor, lastTurnEntry).value_or("0");
        std::from_chars(known.data(), known.data() + known.size(), lastTurn);
        std::erase_if(slice.events,
                      [lastTurn](const UsageEvent& event) { return turnOf(event) < lastTurn; });
    }
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
