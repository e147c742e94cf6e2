#include "LogFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
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
    if (!directory) ::close(descriptor);
    return directory;
}

class Finder {
  public:
    Finder(ProviderID p, std::vector<LogFile>& f) : provider(p), files(f) {}

    void visit(DIR* directory, const std::string& path) {
        // Sub-directories come after the listing, so that only one directory a level is open at a
        // time.
        std::vector<std::string> subdirectories;
        const int descriptor = ::dirfd(directory);
        // NOLINTNEXTLINE(concurrency-mt-unsafe): the stream belongs to this call alone.
        while (const dirent* entry = ::readdir(directory)) {
            const std::string_view name = entry->d_name;
            if (name.starts_with('.')) continue;
            const bool isLog = isLogName(provider, name);
            // Some file systems do not tell the type in the listing.
            const bool unknown = entry->d_type == DT_UNKNOWN;
            struct stat status {};
            if (unknown || (isLog && entry->d_type == DT_REG)) {
                if (::fstatat(descriptor, entry->d_name, &status, AT_SYMLINK_NOFOLLOW) != 0)
                    continue;
            }
            if (entry->d_type == DT_DIR || (unknown && S_ISDIR(status.st_mode))) {
                subdirectories.emplace_back(name);
            } else if (isLog && S_ISREG(status.st_mode)) {
                files.push_back({path + "/" + std::string(name), attributesOf(status)});
            }
        }
        for (const std::string& name : subdirectories) {
            const Directory inner = openDirectory(descriptor, name.c_str(), O_NOFOLLOW);
            if (!inner) continue;
            std::string innerPath = path;
            innerPath += '/';
            innerPath += name;
            visit(inner.get(), innerPath);
        }
    }

  private:
    ProviderID provider;
    std::vector<LogFile>& files;
};

std::optional<std::string_view> withoutPrefix(std::string_view path, std::string_view prefix) {
    if (path.size() <= prefix.size() || !path.starts_with(prefix) || path[prefix.size()] != '/')
        return std::nullopt;
    return path.substr(prefix.size() + 1);
}

} // namespace

bool isLogName(ProviderID provider, std::string_view fileName) {
    switch (provider) {
    case ProviderID::claude:
    case ProviderID::codex:
        return fileName.size() > 6 && fileName.ends_with(".jsonl");
    case ProviderID::grok:
        return fileName == "usage.json";
    case ProviderID::cursor:
        return false;
    }
    return false;
}

std::vector<LogFile> findLogFiles(ProviderID provider, const std::filesystem::path& root) {
    std::vector<LogFile> files;
    // The root itself may be a link: people keep their logs on other disks.
    if (const Directory directory = openDirectory(AT_FDCWD, root.c_str(), 0))
        Finder(provider, files).visit(directory.get(), root.string());
    std::sort(files.begin(), files.end(),
              [](const LogFile& a, const LogFile& b) { return a.path < b.path; });
    return files;
}

std::optional<std::string_view> pathBelow(const std::filesystem::path& root,
                                          std::string_view path) {
    if (const auto below = withoutPrefix(path, root.native())) return below;
    std::error_code unresolved;
    const std::filesystem::path real = std::filesystem::canonical(root, unresolved);
    return unresolved ? std::nullopt : withoutPrefix(path, real.native());
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
