#include "Tokwatch/Report/ResponseFiles.h"

#include "Tokwatch/Report/ResponseReader.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <system_error>
#include <thread>
#include <utility>

namespace tokwatch {
namespace {

constexpr unsigned mostThreads = 4;
/// Below this many bytes a second thread costs more than it brings.
constexpr std::int64_t bytesWorthAThread = 1'048'576;

bool isSame(const FileAttributes& a, const FileAttributes& b) {
    return a.inode == b.inode && a.size == b.size && a.modified == b.modified;
}

} // namespace

ResponseFiles::ResponseFiles(ProviderLocations l, KeepLines k) : locations(std::move(l)), keep(k) {}

LogReading ResponseFiles::read(std::span<const ProviderID> providers, Date touchedSince,
                               const Progress& progress, const std::stop_token& stop) {
    LogReading reading;
    list(providers, touchedSince, reading);
    readListed(progress, stop);
    std::vector<LogFile> gone;
    for (const Known& file : listed)
        if (file.isGone) gone.push_back(file.file);
    if (!gone.empty()) {
        // They may have been moved from one root to another, as archived sessions are.
        reading.unread.clear();
        list(providers, touchedSince, reading);
        readListed({}, stop);
    }
    for (const LogFile& file : gone) {
        const auto isIt = [&file](const Known& found) {
            return found.responses != nullptr &&
                   found.file.attributes.inode == file.attributes.inode;
        };
        if (std::ranges::none_of(listed, isIt)) reading.gone.push_back(file.path);
    }
    for (const Known& file : listed) {
        if (!file.isAskedFor) continue;
        if (file.responses != nullptr) {
            reading.files.push_back(file.responses);
        } else if (!file.isGone) {
            reading.unread.push_back({file.file.path, file.failure});
        }
    }
    return reading;
}

void ResponseFiles::list(std::span<const ProviderID> providers, Date touchedSince,
                         LogReading& reading) {
    std::map<std::string, Known> known;
    for (Known& file : listed)
        known.emplace(file.file.path, std::move(file));
    listed.clear();
    for (const ProviderID provider : providers) {
        for (const std::filesystem::path& root : locations.logRoots(provider)) {
            LogListing listing = findLogFiles(provider, root);
            std::ranges::move(listing.failures, std::back_inserter(reading.unread));
            for (LogFile& file : listing.files) {
                const bool isAskedFor = modifiedAt(file) >= touchedSince;
                Known added{std::move(file), provider, root.string(), isAskedFor, nullptr, {}};
                const auto before = known.find(added.file.path);
                if (before != known.end() &&
                    isSame(before->second.file.attributes, added.file.attributes))
                    added.responses = before->second.responses;
                // The next look may be at more days again.
                if (isAskedFor || added.responses != nullptr) listed.push_back(std::move(added));
            }
        }
    }
}

void ResponseFiles::readListed(const Progress& progress, const std::stop_token& stop) {
    std::vector<Known*> unread;
    std::int64_t all = 0;
    for (Known& file : listed) {
        if (file.responses != nullptr) continue;
        unread.push_back(&file);
        all += file.file.attributes.size;
    }
    // The largest first, so that no thread begins with one when the others are done.
    std::ranges::sort(unread, std::ranges::greater(),
                      [](const Known* file) { return file->file.attributes.size; });
    std::atomic<std::size_t> next = 0;
    std::atomic<std::int64_t> bytes = 0;
    const auto work = [&](const Progress& show) {
        ResponseReader reader(keep, stop);
        for (std::size_t at = next++; at < unread.size() && !stop.stop_requested(); at = next++) {
            read(*unread[at], reader);
            bytes += unread[at]->file.attributes.size;
            if (show) show(bytes, all);
        }
    };
    const auto worth = static_cast<unsigned>(std::min<std::int64_t>(all / bytesWorthAThread, 64));
    const unsigned most = std::min({mostThreads, std::thread::hardware_concurrency(), worth});
    std::vector<std::jthread> others; // joined in the end
    try {
        while (others.size() + 1 < most)
            others.emplace_back(work, Progress());
    } catch (const std::system_error&) {
        // The system allows no more threads; those that there are do it.
    }
    work(progress);
}

void ResponseFiles::read(Known& known, ResponseReader& reader) {
    known.isGone = false;
    try {
        std::optional<FileResponses> responses = reader.read(known.provider, known.file);
        if (!responses) return;
        responses->root = known.root;
        known.responses = std::make_shared<const FileResponses>(std::move(*responses));
    } catch (const std::system_error& error) {
        known.isGone = isGone(error.code());
        known.failure = error.code().message();
    } catch (const std::exception& error) {
        known.failure = error.what();
    }
}

} // namespace tokwatch
