#include "Platform/System/OwnLinks.h"
#include "Tokwatch/CommandLine/Doctor/Examinations.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <system_error>

namespace tokwatch {
namespace {

constexpr const char* topic = "Privacy";
constexpr mode_t othersRights = 077;

std::optional<struct stat> statusOf(const std::filesystem::path& path) {
    struct stat status = {};
    if (::lstat(path.c_str(), &status) != 0) return std::nullopt;
    return status;
}

Finding closed(const std::filesystem::path& path, mode_t mode, Closing closing) {
    if (closing == Closing::offer)
        return {topic, Health::bad,
                path.string() + " is open to other users; tokwatch doctor --fix closes it"};
    // By name: opening and closing a database would drop the locks that this process has on it. Not
    // through a link that took the place of what was looked at.
    if (::fchmodat(AT_FDCWD, path.c_str(), mode & ~othersRights, AT_SYMLINK_NOFOLLOW) != 0)
        return {topic, Health::bad,
                path.string() + " is open to other users and cannot be closed: " +
                    std::generic_category().message(errno)};
    return {topic, Health::good, path.string() + " was open to other users and is closed now"};
}

void examine(const std::filesystem::path& path, mode_t kind, Closing closing,
             std::vector<Finding>& findings) {
    const auto status = statusOf(path);
    if (!status || (status->st_mode & S_IFMT) != kind) return;
    if (status->st_uid != ::geteuid())
        findings.push_back({topic, Health::bad, path.string() + " belongs to another user"});
    else if ((status->st_mode & othersRights) != 0)
        findings.push_back(closed(path, status->st_mode & 07777, closing));
}

/// The directory and the files in it.
void examineDirectory(const std::filesystem::path& named, Closing closing,
                      std::vector<Finding>& findings) {
    const std::filesystem::path directory = followOwnLinks(named);
    examine(directory, S_IFDIR, closing, findings);
    // Whoever may not enter the folder cannot reach a file in it by this name; by another one,
    // made while the folder was open, they could.
    std::error_code ignored;
    std::filesystem::directory_iterator entry(directory, ignored);
    for (; entry != std::filesystem::directory_iterator() && !ignored; entry.increment(ignored))
        examine(entry->path(), S_IFREG, closing, findings);
}

} // namespace

std::vector<Finding> examinePrivacy(const UserPaths& paths, Closing closing) {
    std::vector<Finding> findings;
    for (const auto& directory :
         {paths.database() ? std::optional(paths.database()->parent_path()) : std::nullopt,
          paths.snapshotDirectory()}) {
        if (!directory) continue;
        try {
            examineDirectory(*directory, closing, findings);
        } catch (const std::system_error& error) {
            // What is behind another user's link is none of ours to close.
            findings.push_back({topic, Health::bad, error.what()});
        }
    }
    if (findings.empty())
        findings.push_back({topic, Health::good, "what is stored is open to you alone"});
    return findings;
}

} // namespace tokwatch
