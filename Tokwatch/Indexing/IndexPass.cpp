#include "Tokwatch/Indexing/IndexPass.h"

#include "Tokwatch/Indexing/ReadAhead.h"
#include "TokwatchCore/Records/RecordCoding.h"
#include "TokwatchCore/Support/Amounts.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <string_view>
#include <system_error>
#include <unordered_map>

namespace tokwatch {
namespace {

/// Events in one transaction. More of them touch each page of the key index less often; fewer keep
/// memory low and let other users of the store in sooner.
constexpr std::size_t groupEventLimit = 16'384;
/// The first group is smaller and each next one twice as large, so that the writer has something to
/// do while the first logs are still being read.
constexpr std::size_t firstGroupEvents = 2'048;
/// Slices in one transaction: bounds what a killed pass has to read again.
constexpr std::size_t groupSliceLimit = 1'024;
/// For less than this many unread bytes a further thread costs more than it brings.
constexpr std::int64_t bytesForReader = 2'097'152;
/// How many folders of a root are named that could not be listed.
constexpr std::size_t namedFailures = 5;

/// Whether the provider's files are replaced as a whole, instead of growing by lines.
bool isDocument(ProviderID provider) {
    return traits(provider).logFormat == LogFormat::grokDocument;
}

/// Whether the file goes on where its cursor stands, instead of being another one.
bool continues(const PendingFile& pending) {
    return pending.cursor && pending.cursor->inode == pending.file.attributes.inode &&
           pending.cursor->offset <= pending.file.attributes.size;
}

bool isChanged(const PendingFile& pending) {
    if (isDocument(pending.provider)) return isChangedDocument(pending.file, pending.cursor);
    return !continues(pending) || pending.cursor->offset != pending.file.attributes.size;
}

/// Of a changed file: a document is read whole, a log from its cursor.
std::int64_t unreadBytes(const PendingFile& pending) {
    const bool appended = !isDocument(pending.provider) && continues(pending);
    return pending.file.attributes.size - (appended ? pending.cursor->offset : 0);
}

std::string fileName(const PendingFile& pending) {
    return std::filesystem::path(pending.file.path).filename().string();
}

void logFailure(const PendingFile& pending, const std::string& reason) {
    systemLog("indexing " + fileName(pending) + " failed: " + reason);
}

} // namespace

IndexPass::IndexPass(Surroundings given) : surroundings(given), groupEvents(firstGroupEvents) {}

IndexOutcome IndexPass::run() {
    generation = surroundings.store.generation();
    findPending();
    std::int64_t unread = 0;
    for (const Part& part : parts)
        unread += part.progress.bytesTotal;
    const auto readers = static_cast<std::size_t>(unread / bytesForReader);
    if (readers == 0) {
        readInline();
    } else {
        readAhead(std::min({readers, surroundings.readers, files.size()}));
    }
    flush();
    logTroubles();
    noteUnfinished();
    return outcome;
}

std::vector<LogFile> IndexPass::filesIn(ProviderID provider, const std::filesystem::path& root) {
    if (!surroundings.scope) {
        LogListing listing = findLogFiles(provider, root);
        noteFailures(root, listing.failures);
        return std::move(listing.files);
    }
    std::vector<LogFile> found;
    for (const std::string& path : *surroundings.scope) {
        if (std::optional<LogFile> file = findLogFile(provider, root, path))
            found.push_back(std::move(*file));
    }
    // In the order of a pass over all files, and each once however often it was reported.
    std::ranges::sort(found, {}, &LogFile::path);
    const auto repeated = std::ranges::unique(found, {}, &LogFile::path);
    found.erase(repeated.begin(), repeated.end());
    return found;
}

void IndexPass::noteFailures(const std::filesystem::path& root,
                             const std::vector<LogListing::Failure>& failures) {
    if (failures.empty()) return;
    unreadableFolders += static_cast<std::int64_t>(failures.size());
    std::string text = "listing " + root.string() + " failed: ";
    for (std::size_t i = 0; i < std::min(failures.size(), namedFailures); ++i) {
        const LogListing::Failure& failure = failures[i];
        if (i > 0) text += "; ";
        if (failure.path != root) text += failure.path.substr(root.native().size() + 1) + ": ";
        text += failure.reason;
    }
    if (failures.size() > namedFailures)
        text += "; and " + std::to_string(failures.size() - namedFailures) + " more";
    unlisted.push_back(std::move(text));
}

std::vector<IndexPass::Candidate> IndexPass::candidates() {
    std::vector<Candidate> listed;
    for (const ProviderID provider : allCases<ProviderID>) {
        Part& part = parts.emplace_back(Part{{provider, 0, 0}, {provider, 0, 0, 0}});
        for (const std::filesystem::path& root : surroundings.locations.logRoots(provider)) {
            std::vector<LogFile> inRoot = filesIn(provider, root);
            part.statistics.files += std::ssize(inRoot);
            listed.reserve(listed.size() + inRoot.size());
            for (LogFile& file : inRoot)
                listed.push_back({provider, false, std::move(file), {}});
        }
    }
    return listed;
}

/// Of a pass over all files: what the store knows of each. Most rows say that nothing has changed
/// and are done with here, before anything of them is copied.
void IndexPass::noteCursors(std::vector<Candidate>& listed) {
    std::unordered_multimap<std::string_view, Candidate*> byPath(listed.size());
    for (Candidate& candidate : listed)
        byPath.emplace(candidate.file.path, &candidate);
    surroundings.store.visitCursors([&byPath](std::string_view path, std::string_view row) {
        for (auto [at, end] = byPath.equal_range(path); at != end; ++at) {
            Candidate& candidate = *at->second;
            const FileAttributes& attributes = candidate.file.attributes;
            candidate.isUnchanged =
                !isDocument(candidate.provider) && standsAt(row, attributes.inode, attributes.size);
            if (!candidate.isUnchanged) candidate.cursorRow = row;
        }
    });
}

std::optional<FileCursor> IndexPass::storedCursor(const Candidate& candidate) const {
    const std::string& path = candidate.file.path;
    if (surroundings.scope) return surroundings.store.cursor(path);
    if (!candidate.cursorRow) return std::nullopt;
    return decodeCursorRow(path, *candidate.cursorRow);
}

void IndexPass::findPending() {
    std::vector<Candidate> listed = candidates();
    if (!surroundings.scope) noteCursors(listed);
    for (Candidate& candidate : listed) {
        if (candidate.isUnchanged) continue;
        PendingFile pending{candidate.provider, candidate.file, std::nullopt};
        try {
            pending.cursor = storedCursor(candidate);
        } catch (const DecodingError& error) {
            ++unreadableFiles;
            logFailure(pending, error.what());
            continue;
        }
        if (!isChanged(pending)) continue;
        partOf(pending.provider).progress.bytesTotal += unreadBytes(pending);
        files.push_back(std::move(pending));
    }
}

void IndexPass::readInline() {
    SliceReader reader(files, surroundings.now);
    for (std::size_t file = 0; file < files.size(); ++file) {
        reader.begin(file);
        while (!isOver()) {
            std::optional<Slice> slice = reader.next();
            if (!slice) break;
            take(std::move(*slice));
        }
    }
}

void IndexPass::readAhead(std::size_t readers) {
    std::optional<ReadAhead> ahead;
    try {
        ahead.emplace(files, surroundings.now, readers);
    } catch (const std::system_error&) {
        return readInline(); // the system allows no more threads
    }
    events.reserve(groupEventLimit); // not moved as they become more
    while (!isOver()) {
        std::optional<Slice> slice = ahead->next();
        if (!slice) return;
        take(std::move(*slice));
    }
}

void IndexPass::take(Slice slice) {
    const PendingFile& pending = files[slice.file];
    Part& part = partOf(pending.provider);
    if (present != &part) {
        // What is shown while a long pass runs goes provider by provider.
        flush();
        present = &part;
    }
    part.progress.bytesRead += slice.bytes;
    part.statistics.bytesRead += slice.bytes;
    if (!slice.failure.empty()) {
        ++unreadableFiles;
        if (slice.isShortage)
            starvedFor[slice.failure].push_back(slice.file);
        else
            logFailure(pending, slice.failure);
    } else if (!unstored.contains(slice.file)) {
        group.push_back({slice.file, events.size(), slice.events.size(), std::move(slice.cursor),
                         slice.cursorMoved});
        std::move(slice.events.begin(), slice.events.end(), std::back_inserter(events));
        noteCodexLimits(std::move(slice.limits));
        if (slice.heldUntil) held.emplace(slice.file, *slice.heldUntil);
    }
    if (events.size() >= groupEvents || group.size() >= groupSliceLimit) {
        flush();
        groupEvents = std::min(groupEvents * 2, groupEventLimit);
    }
    // A value for each slice: the receiver decides how often to show one.
    if (surroundings.progress) surroundings.progress(part.progress);
}

IndexPass::Part& IndexPass::partOf(ProviderID provider) {
    return *std::find_if(parts.begin(), parts.end(), [provider](const Part& part) {
        return part.progress.provider == provider;
    });
}

IndexStatistics IndexPass::statistics() const {
    IndexStatistics all;
    for (const Part& part : parts)
        all.providers.push_back(part.statistics);
    all.unreadableFiles = unreadableFiles;
    all.unreadableFolders = unreadableFolders;
    all.unstoredFiles = static_cast<std::int64_t>(unstored.size());
    return all;
}

void IndexPass::noteCodexLimits(std::optional<ProviderLimits> limits) {
    if (limits && replaceIfNewer(codexLimits, std::move(*limits))) codexLimitsPending = true;
}

void IndexPass::flush() {
    try {
        std::vector<FileCursor> cursors;
        for (const StoredSlice& slice : group) {
            if (slice.cursorMoved) cursors.push_back(slice.cursor);
        }
        // Nothing to write means no transaction either: a pass over unchanged files leaves the
        // database alone.
        if (!events.empty()) addEvents(events);
        if (codexLimitsPending) storeCodexLimits();
        if (!cursors.empty()) save(cursors);
        isAnythingStored = isAnythingStored || !events.empty() || !cursors.empty();
    } catch (const UsageStoreError& error) {
        // The lock's holder is not going to be quicker for a single slice, and each try waits.
        if (error.isLocked()) {
            giveUpGroup(error.what());
        } else {
            storeOneByOne();
        }
    }
    group.clear();
    events.clear();
}

void IndexPass::addEvents(std::span<const UsageEvent> batch) {
    const std::int64_t added = surroundings.ingestEvents(batch, surroundings.calendar);
    outcome.newEvents += added;
    present->statistics.newEvents += added;
}

void IndexPass::save(std::span<const FileCursor> cursors) {
    if (!surroundings.store.save(cursors, generation)) isOvertaken = true;
}

void IndexPass::storeCodexLimits() {
    // What was fetched meanwhile may be newer than what Codex last wrote into its log.
    if (surroundings.store.setLimitsIfNewer(*codexLimits, ProviderID::codex, surroundings.now()))
        outcome.codexLimitsUpdated = true;
    codexLimitsPending = false;
}

void IndexPass::storeOneByOne() {
    for (const StoredSlice& slice : group) {
        // A cursor past a slice that is not stored would lose that slice for good.
        if (unstored.contains(slice.file)) continue;
        try {
            if (slice.count > 0) addEvents(std::span(events).subspan(slice.first, slice.count));
            if (codexLimitsPending) storeCodexLimits();
            if (slice.cursorMoved) save(std::span(&slice.cursor, 1));
        } catch (const UsageStoreError& error) {
            giveUp(slice.file, error.what());
        }
    }
}

void IndexPass::giveUpGroup(const std::string& reason) {
    for (const StoredSlice& slice : group) {
        if (!unstored.contains(slice.file)) giveUp(slice.file, reason);
    }
}

void IndexPass::giveUp(std::size_t file, const std::string& reason) {
    unstored.insert(file);
    unstoredFor[reason].push_back(file);
}

/// One line for each reason, once until something can be stored: a full disk has the same one for
/// thousands of files and every few seconds, and so has a shortage.
void IndexPass::logTroubles() {
    if (isAnythingStored) surroundings.toldTroubles.clear();
    for (const auto* reasons : {&unstoredFor, &starvedFor})
        for (const auto& [reason, which] : *reasons)
            logOnce(reason, which);
}

void IndexPass::logOnce(const std::string& reason, const std::vector<std::size_t>& which) {
    if (!surroundings.toldTroubles.insert(reason).second) return;
    const std::int64_t others = std::ssize(which) - 1;
    logFailure(files[which.front()],
               reason + (others == 0 ? "" : "; so did " + counted(others, "other file")));
}

void IndexPass::noteUnfinished() {
    for (const auto& [file, due] : held) {
        if (!unstored.contains(file)) outcome.unfinished.push_back({files[file].file.path, due});
    }
    std::set<std::size_t> again = unstored;
    for (const auto& [reason, which] : starvedFor)
        again.insert(which.begin(), which.end());
    const Date due = surroundings.now() + Indexer::retryInterval;
    for (const std::size_t file : again)
        outcome.unfinished.push_back({files[file].file.path, due});
}

} // namespace tokwatch
