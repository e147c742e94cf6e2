#include "TokwatchCore/Ingestion/LogFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <future>
#include <iterator>
#include <memory>
#include <system_error>
#include <thread>

namespace tokwatch {
namespace {

/// For fewer folders a further thread costs more than it brings.
constexpr std::size_t foldersForThread = 64;
constexpr std::size_t mostThreads = 4;

struct DirectoryCloser {
    void operator()(DIR* directory) const { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, DirectoryCloser>;

Directory openDirectory(int parent, const char* name, int flags) {
    const int descriptor = ::openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags);
    if (descriptor < 0) return nullptr;
    Directory directory(::fdopendir(descriptor));
    if (!directory) {
        const int reason = errno;
        ::close(descriptor);
        errno = reason;
    }
    return directory;
}

class Finder {
  public:
    Finder(ProviderID p, LogListing& l) : provider(p), listing(l) {}

    void visitRoot(const std::string& root) {
        // The root itself may be a link: people keep their logs on other disks.
        if (const Directory directory = openDirectory(AT_FDCWD, root.c_str(), 0)) {
            shareOut(::dirfd(directory.get()), root, list(directory.get(), root));
        } else if (errno != ENOENT) {
            fail(root);
        }
    }

  private:
    /// The folders of a root, each by the thread that is free first. Most of the time the system
    /// looks up names, which it does for several at once.
    void shareOut(int parent, const std::string& root, const std::vector<std::string>& folders) {
        std::atomic<std::size_t> next = 0;
        const auto visitNext = [&](LogListing& found) {
            Finder finder(provider, found);
            for (std::size_t at = next++; at < folders.size(); at = next++)
                finder.visitInner(parent, folders[at], root + "/" + folders[at]);
        };
        const std::size_t threads = std::min({folders.size() / foldersForThread, mostThreads,
                                              std::size_t{std::thread::hardware_concurrency()}});
        std::vector<std::future<LogListing>> others;
        try {
            while (others.size() + 1 < threads) {
                others.push_back(std::async(std::launch::async, [&visitNext] {
                    LogListing found;
                    visitNext(found);
                    return found;
                }));
            }
        } catch (const std::system_error&) {
            // The system allows no more threads; those that there are do it.
        }
        visitNext(listing);
        for (std::future<LogListing>& other : others) {
            LogListing found = other.get();
            std::ranges::move(found.files, std::back_inserter(listing.files));
            std::ranges::move(found.failures, std::back_inserter(listing.failures));
        }
    }

    void visit(DIR* directory, const std::string& path) {
        // After the listing, so that only one directory a level is open at a time.
        for (const std::string& name : list(directory, path))
            visitInner(::dirfd(directory), name, path + "/" + name);
    }

    /// Notes the logs in a folder; the names of the folders in it.
    std::vector<std::string> list(DIR* directory, const std::string& path) {
        std::vector<std::string> subdirectories;
        // NOLINTNEXTLINE(concurrency-mt-unsafe): the stream belongs to this call alone.
        while (const dirent* entry = (errno = 0, ::readdir(directory)))
            look(*entry, directory, path, subdirectories);
        if (errno != 0) fail(path);
        return subdirectories;
    }

    void look(const dirent& entry, DIR* directory, const std::string& path,
              std::vector<std::string>& subdirectories) {
        const std::string_view name = entry.d_name;
        if (name.starts_with('.')) return;
        const bool isLog = isLogName(provider, name);
        // Some file systems do not tell the type in the listing.
        const bool unknown = entry.d_type == DT_UNKNOWN;
        struct stat status = {};
        if (unknown || (isLog && entry.d_type == DT_REG)) {
            if (::fstatat(::dirfd(directory), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
                if (errno != ENOENT) fail(path + "/" + std::string(name));
                return;
            }
        }
        if (entry.d_type == DT_DIR || (unknown && S_ISDIR(status.st_mode))) {
            subdirectories.emplace_back(name);
        } else if (isLog && S_ISREG(status.st_mode)) {
            listing.files.push_back({path + "/" + std::string(name), attributesOf(status)});
        }
    }

    void visitInner(int parent, const std::string& name, const std::string& path) {
        if (const Directory inner = openDirectory(parent, name.c_str(), O_NOFOLLOW)) {
            visit(inner.get(), path);
        } else if (errno != ENOENT && errno != ENOTDIR && errno != ELOOP) {
            // Those say that it went or became something else since it was listed.
            fail(path);
        }
    }

    void fail(const std::string& path) {
        listing.failures.push_back({path, std::generic_category().message(errno)});
    }

    ProviderID provider;
    LogListing& listing;
};

std::optional<std::string_view> withoutPrefix(std::string_view path, std::string_view prefix) {
    if (path.size() <= prefix.size() || !path.starts_with(prefix) || path[prefix.size()] != '/')
        return std::nullopt;
    return path.substr(prefix.size() + 1);
}

} // namespace

Date modifiedAt(const LogFile& file) {
    return dateFromUnixSeconds(static_cast<double>(file.attributes.modified) / 1e9);
}

bool isLogName(ProviderID provider, std::string_view fileName) {
    switch (traits(provider).logFormat) {
    case LogFormat::claudeLines:
    case LogFormat::codexLines:
        return fileName.size() > 6 && fileName.ends_with(".jsonl");
    case LogFormat::grokDocument:
        return fileName == "usage.json";
    case LogFormat::none:
        return false;
    }
    return false;
}

LogListing findLogFiles(ProviderID provider, const std::filesystem::path& root) {
    LogListing listing;
    Finder(provider, listing).visitRoot(root.string());
    // Whichever thread came by them, and whenever.
    std::ranges::sort(listing.files, {}, &LogFile::path);
    std::ranges::sort(listing.failures, {}, &LogListing::Failure::path);
    return listing;
}

std::optional<std::string_view> pathBelow(const std::filesystem::path& root,
                                          std::string_view path) {
    if (const auto below = withoutPrefix(path, root.native())) return below;
    std::error_code unresolved;
    const std::filesystem::path real = std::filesystem::canonical(root, unresolved);
    return unresolved ? std::nullopt : withoutPrefix(path, real.native());
}

bool isGone(const std::error_code& failure) {
    return failure == std::errc::no_such_file_or_directory || failure == std::errc::not_a_directory;
}

DeletedLogs::DeletedLogs(const std::vector<std::filesystem::path>& logRoots) {
    for (const std::filesystem::path& root : logRoots) {
        std::error_code problem;
        if (!std::filesystem::is_empty(root, problem) && !problem)
            roots.push_back(root.native() + '/');
    }
}

bool DeletedLogs::operator()(const std::string& path) const {
    const bool isBelow = std::ranges::any_of(
        roots, [&path](const std::string& root) { return path.starts_with(root); });
    struct stat status {};
    return isBelow && ::lstat(path.c_str(), &status) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

std::optional<LogFile> findLogFile(ProviderID provider, const std::filesystem::path& root,
                                   std::string_view path) {
    const std::optional<std::string_view> below = pathBelow(root, path);
    if (!below || below->starts_with('.') || below->find("/.") != std::string_view::npos)
        return std::nullopt;
    const std::filesystem::path relative(*below);
    if (!isLogName(provider, relative.filename().native())) return std::nullopt;
    std::error_code failure;
    const std::filesystem::path real = std::filesystem::canonical(root, failure);
    if (failure) return std::nullopt;
    // No link leads further below the root.
    const std::filesystem::path directory = (real / relative).parent_path();
    if (std::filesystem::canonical(directory, failure) != directory || failure) return std::nullopt;
    struct stat status {};
    if (::lstat((real / relative).c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return LogFile{root.string() + "/" + std::string(*below), attributesOf(status)};
}

} // namespace tokwatch
