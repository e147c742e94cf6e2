#include "TokwatchCore/Ingestion/LogFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <system_error>

namespace tokwatch {
namespace {

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
            visit(directory.get(), root);
        } else if (errno != ENOENT) {
            fail(root);
        }
    }

  private:
    void visit(DIR* directory, const std::string& path) {
        // Sub-directories come after the listing, so that only one directory a level is open at a
        // time.
        std::vector<std::string> subdirectories;
        // NOLINTNEXTLINE(concurrency-mt-unsafe): the stream belongs to this call alone.
        while (const dirent* entry = (errno = 0, ::readdir(directory)))
            look(*entry, directory, path, subdirectories);
        if (errno != 0) fail(path);
        for (const std::string& name : subdirectories)
            visitInner(::dirfd(directory), name, path + "/" + name);
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
    std::ranges::sort(listing.files, {}, &LogFile::path);
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
