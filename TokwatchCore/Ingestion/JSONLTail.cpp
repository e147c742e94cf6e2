#include "TokwatchCore/Ingestion/JSONLTail.h"

#include "Platform/System/FileAccess.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace tokwatch {
namespace {

/// In the context of a cursor that stands within a line to be stepped over.
constexpr const char* overlongEntry = "overlong";

/// Whether the stored cursor still speaks of this very file.
bool isCurrent(const FileCursor& stored, const FileAttributes& now) {
    return stored.inode == now.inode && now.size >= stored.offset;
}

/// Points the result to where reading goes on: at the stored cursor, or at the start of a file that
/// is new, was replaced or shrank.
void start(JSONLTail::Result& result, const std::filesystem::path& file,
           const std::optional<FileCursor>& stored, const FileAttributes& now) {
    result.reset = stored && !isCurrent(*stored, now);
    result.cursor = stored && !result.reset ? *stored : FileCursor{file.string(), now.inode, 0, {}};
}

void split(std::string_view consumed, std::vector<std::string_view>& lines) {
    while (!consumed.empty()) {
        const std::size_t end = consumed.find('\n');
        std::string_view line = consumed.substr(0, end);
        if (line.ends_with('\r')) line.remove_suffix(1);
        lines.push_back(line);
        consumed.remove_prefix(end + 1);
    }
}

/// Reads whole lines from `offset` into the buffer, doubling the window while a single line exceeds
/// it. The number of bytes up to and including the last line feed; 0 when there is no complete
/// line.
std::size_t readLines(const InputFile& input, std::int64_t size, std::int64_t offset,
                      std::int64_t maxBytes, TailBuffer& buffer) {
    std::int64_t window = std::max<std::int64_t>(maxBytes, 1);
    std::size_t filled = 0;
    while (true) {
        // No more room than the file needs: most logs are far smaller than a window.
        const std::int64_t unread = std::max<std::int64_t>(size - offset, 0);
        const auto wanted = static_cast<std::size_t>(std::min(window, unread));
        buffer.grow(wanted, filled);
        const std::size_t scanned = filled;
        filled += input.read(buffer.data() + filled, wanted - filled,
                             offset + static_cast<std::int64_t>(filled));
        const void* last =
            filled > scanned ? memrchr(buffer.data() + scanned, '\n', filled - scanned) : nullptr;
        if (last != nullptr)
            return static_cast<std::size_t>(static_cast<const char*>(last) - buffer.data()) + 1;
        if (static_cast<std::int64_t>(filled) < window) return 0;
        if (__builtin_mul_overflow(window, 2, &window))
            fatal("a line of a log exceeds 64 bits of length");
    }
}

/// Where the first line feed from `offset` on is; where looking stopped when there is none in the
/// next `longestLine` bytes.
struct LineEnd {
    std::int64_t offset = 0; ///< just past it
    bool found = false;
};

LineEnd findLineEnd(const InputFile& input, std::int64_t offset) {
    std::array<char, 65'536> block;
    std::int64_t at = offset;
    while (at - offset <= longestLine) {
        const std::size_t got = input.read(block.data(), block.size(), at);
        if (const void* feed = std::memchr(block.data(), '\n', got))
            return {at + (static_cast<const char*>(feed) - block.data()) + 1, true};
        at += static_cast<std::int64_t>(got);
        if (got < block.size()) break;
    }
    return {at, false};
}

} // namespace

void TailBuffer::grow(std::size_t wanted, std::size_t used) {
    if (wanted <= size) return;
    // So that a few files of growing size do not each take new memory.
    wanted = std::bit_ceil(wanted);
    auto larger = std::make_unique_for_overwrite<char[]>(wanted);
    if (used > 0) std::memcpy(larger.get(), bytes.get(), used);
    bytes = std::move(larger);
    size = wanted;
}

void TailBuffer::shrink(std::size_t most) {
    if (size <= most) return;
    bytes.reset();
    size = 0;
}

JSONLTail::Result JSONLTail::read(const LogFile& file, const std::optional<FileCursor>& stored,
                                  std::int64_t maxBytes, TailBuffer& buffer) {
    Result result;
    start(result, file.path, stored, file.attributes);
    result.file = file.attributes;
    if (file.attributes.size <= result.cursor.offset) return result;

    const InputFile input(file.path);
    // The open file's attributes count: it may have been replaced since it was listed.
    const FileAttributes attributes = input.attributes();
    start(result, file.path, stored, attributes);
    result.file = attributes;
    const std::size_t consumed =
        readLines(input, attributes.size, result.cursor.offset, maxBytes, buffer);
    split({buffer.data(), consumed}, result.lines);
    result.bytesRead = static_cast<std::int64_t>(consumed);
    result.cursor.offset += result.bytesRead;
    return result;
}

std::optional<JSONLTail::Result> skipOverlongLine(const std::filesystem::path& file,
                                                  const std::optional<FileCursor>& stored) {
    const InputFile input(file);
    JSONLTail::Result result;
    result.file = input.attributes();
    start(result, file, stored, result.file);
    FileCursor& cursor = result.cursor;
    const LineEnd end = findLineEnd(input, cursor.offset);
    result.bytesRead = end.offset - cursor.offset;
    const bool isWithin = cursor.context.contains(overlongEntry);
    if (!isWithin && result.bytesRead <= longestLine) return std::nullopt;
    if (!isWithin)
        systemLog("indexing " + file.filename().string() + ": an endless line is passed over");
    cursor.offset = end.offset;
    if (end.found) {
        cursor.context.erase(overlongEntry);
    } else {
        cursor.context[overlongEntry] = "true";
    }
    return result;
}

JSONLTail::Result readSlice(const LogFile& file, const std::optional<FileCursor>& cursor,
                            std::int64_t maxBytes, TailBuffer& buffer) {
    // Files that cannot hold an overlong line need not be searched for one.
    if (file.attributes.size > longestLine) {
        if (auto skipped = skipOverlongLine(file.path, cursor)) return *std::move(skipped);
    }
    return JSONLTail::read(file, cursor, maxBytes, buffer);
}

} // namespace tokwatch
