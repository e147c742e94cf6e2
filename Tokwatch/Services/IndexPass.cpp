#include "IndexPass.h"

#include "BoundedQueue.h"
#include "RecordCoding.h"
#include "SystemLog.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <thread>

namespace tokwatch {
namespace {

/// Events in one transaction. More of them touch each page of the key index less often; fewer keep
/// memory low and let other users of the store in sooner.
constexpr std::size_t groupEventLimit = 16'384;
/// Slices in one transaction: bounds what a killed pass has to read again.
constexpr std::size_t groupSliceLimit = 1'024;
/// Below this many unread bytes a second thread costs more than it brings.
constexpr std::int64_t readAheadBytes = 2 * 1024 * 1024;
/// How far the reader may run ahead, in events and slices.
constexpr std::size_t readAheadWeight = 16'384;

} // namespace

IndexPass::IndexPass(Environment environment) : env(environment) {}

IndexOutcome IndexPass::run() {
    cursorTexts = env.store.cursorTexts();
    for (const ProviderID provider : {ProviderID::claude, ProviderID::codex, ProviderID::grok}) {
        if (!env.stop) indexProvider(provider);
    }
    recordCursorUsage();
    return outcome;
}

std::vector<std::filesystem::path> IndexPass::roots(ProviderID provider) const {
    switch (provider) {
    case ProviderID::claude:
        return {env.locations.claudeProjects()};
    case ProviderID::codex:
        return {env.locations.codexRoots()[0], env.locations.codexRoots()[1]};
    case ProviderID::grok:
        return {env.locations.grokSessions()};
    case ProviderID::cursor:
        return {};
    }
    return {};
}

std::optional<FileCursor> IndexPass::storedCursor(const std::string& path) const {
    const auto found = cursorTexts.find(path);
    if (found == cursorTexts.end()) return std::nullopt;
    return decodeCursorRow(path, found->second);
}

std::vector<PendingFile> IndexPass::findPending(ProviderID provider) {
    std::vector<PendingFile> pending;
    for (const std::filesystem::path& root : roots(provider)) {
        for (LogFile& file : findLogFiles(provider, root)) {
            ++current->files;
            PendingFile candidate{provider, std::move(file), std::nullopt};
            const FileAttributes& now = candidate.file.attributes;
            try {
                candidate.cursor = storedCursor(candidate.file.path);
            } catch (const DecodingError& error) {
                ++counted.unreadableFiles;
                fail(candidate, error.what());
                continue;
            }
            const std::optional<FileCursor>& cursor = candidate.cursor;
            const bool changed =
                provider == ProviderID::grok
                    ? isChangedDocument(candidate.file, cursor)
                    : !cursor || cursor->inode != now.inode || cursor->offset != now.size;
            if (!changed) continue;
            const bool continues = provider != ProviderID::grok && cursor &&
                                   cursor->inode == now.inode && cursor->offset <= now.size;
            progress.bytesTotal += continues ? now.size - cursor->offset : now.size;
            pending.push_back(std::move(candidate));
        }
    }
    return pending;
}

void IndexPass::indexProvider(ProviderID provider) {
    current = &counted.providers.emplace_back();
    current->provider = provider;
    progress = {provider, 0, 0};
    unstored.clear();
    files = findPending(provider);
    if (files.empty()) return;
    report();
    if (progress.bytesTotal < readAheadBytes) {
        readInline();
    } else {
        readAhead();
    }
    flush();
}

void IndexPass::readInline() {
    SliceReader reader(files);
    while (!env.stop) {
        std::optional<Slice> slice = reader.next();
        if (!slice) return;
        take(std::move(*slice));
    }
}

void IndexPass::readAhead() {
    BoundedQueue<Slice> queue(readAheadWeight);
    std::thread worker([this, &queue] {
        SliceReader reader(files);
        while (std::optional<Slice> slice = reader.next()) {
            const std::size_t weight = slice->events.size() + 1;
            if (!queue.push(std::move(*slice), weight)) return;
        }
        queue.close();
    });
    try {
        while (!env.stop) {
            std::optional<Slice> slice = queue.pop();
            if (!slice) break;
            take(std::move(*slice));
        }
    } catch (...) {
        queue.close();
        worker.join();
        throw;
    }
    queue.close();
    worker.join();
}

void IndexPass::take(Slice slice) {
    progress.bytesRead += slice.bytes;
    current->bytesRead += slice.bytes;
    if (!slice.failure.empty()) {
        ++counted.unreadableFiles;
        fail(files[slice.file], slice.failure);
    } else if (!unstored.contains(slice.file)) {
        group.push_back({slice.file, events.size(), slice.events.size(), std::move(slice.cursor),
                         slice.cursorMoved});
        std::move(slice.events.begin(), slice.events.end(), std::back_inserter(events));
        noteCodexLimits(std::move(slice.limits));
    }
    if (events.size() >= groupEventLimit || group.size() >= groupSliceLimit) flush();
    // A value for each slice: the receiver decides how often to show one.
    report();
}

void IndexPass::noteCodexLimits(std::optional<ProviderLimits> limits) {
    if (!limits) return;
    // Archived sessions are read after running ones, so the last to be read is not always the
    // newest.
    if (codexLimits && codexLimits->fetchedAt > limits->fetchedAt) return;
    codexLimits = std::move(limits);
    codexLimitsPending = true;
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
        if (!cursors.empty()) env.store.save(cursors);
    } catch (const UsageStoreError&) {
        storeOneByOne();
    }
    group.clear();
    events.clear();
}

void IndexPass::addEvents(std::span<const UsageEvent> batch) {
    const std::int64_t added = env.ingestEvents(batch, env.calendar);
    outcome.newEvents += added;
    current->newEvents += added;
}

void IndexPass::storeCodexLimits() {
    env.store.setLimits(*codexLimits, ProviderID::codex);
    codexLimitsPending = false;
    outcome.codexLimitsUpdated = true;
}

void IndexPass::storeOneByOne() {
    for (const StoredSlice& slice : group) {
        // A cursor past a slice that is not stored would lose that slice for good.
        if (unstored.contains(slice.file)) continue;
        try {
            if (slice.count > 0) addEvents(std::span(events).subspan(slice.first, slice.count));
            if (codexLimitsPending) storeCodexLimits();
            if (slice.cursorMoved) env.store.save(slice.cursor);
        } catch (const UsageStoreError& error) {
            unstored.insert(slice.file);
            ++counted.unstoredFiles;
            fail(files[slice.file], error.what());
        }
    }
}

void IndexPass::recordCursorUsage() {
    if (!env.cursorUsage) return;
    try {
        const std::vector<UsageEvent> usage = env.cursorUsage();
        if (!usage.empty()) outcome.newEvents += env.ingestEvents(usage, env.calendar);
    } catch (const std::exception& error) {
        systemLog(std::string("storing Cursor usage failed: ") + error.what());
    }
}

void IndexPass::fail(const PendingFile& pending, const std::string& reason) {
    systemLog("indexing " + std::filesystem::path(pending.file.path).filename().string() +
              " failed: " + reason);
}

void IndexPass::report() {
    if (env.progress) env.progress(progress);
}

} // namespace tokwatch
