#include "Platform/System/OwnLinks.h"

#include "Platform/System/FileDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tokwatch {
namespace {

constexpr int mostLinks = 16;

[[noreturn]] void failToFollow(int error, const std::filesystem::path& path) {
    throw std::system_error(error, std::generic_category(), path.string());
}

std::optional<uid_t> ownerOf(const std::filesystem::path& path) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) return std::nullopt;
    return status.st_uid;
}

bool mayBeFollowed(uid_t owner, const std::filesystem::path& link) {
    if (!isTrustedOwner(owner, link)) return false;
    // Out of what is its owner's, the link would lead the administrator to what that one must not
    // touch.
    return owner == 0 || owner == ::geteuid() || ownerOf(link) == owner;
}

/// Where the link leads that stands at the path; none where no link stands there.
std::optional<std::filesystem::path> linkTarget(const std::filesystem::path& path) {
    struct stat status = {};
    if (::lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return std::nullopt;
    // By descriptor, so that the link whose owner is looked at is the one that is followed.
    const FileDescriptor link(::open(path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (!link.isOpen() || ::fstat(link.get(), &status) != 0) failToFollow(errno, path);
    if (!mayBeFollowed(status.st_uid, path))
        throw ForeignFileError(path, "is a link of another user");
    std::array<char, PATH_MAX> target{};
    const ssize_t length = ::readlinkat(link.get(), "", target.data(), target.size());
    if (length < 0) failToFollow(errno, path);
    return std::string(target.data(), static_cast<std::size_t>(length));
}

} // namespace

ForeignFileError::ForeignFileError(const std::filesystem::path& file, const char* what)
    : std::system_error(EPERM, std::generic_category(), file.string() + ' ' + what) {}

bool isTrustedOwner(uid_t owner, const std::filesystem::path& place) {
    const uid_t user = ::geteuid();
    return owner == 0 || owner == user || (user == 0 && ownerOf(place.parent_path()) == owner);
}

std::filesystem::path followOwnLinks(const std::filesystem::path& path) {
    std::vector<std::filesystem::path> ahead; // the next name last
    const auto goBy = [&ahead](const std::filesystem::path& names) {
        const std::vector<std::filesystem::path> inOrder(names.begin(), names.end());
        ahead.insert(ahead.end(), inOrder.rbegin(), inOrder.rend());
    };
    goBy(std::filesystem::absolute(path));
    std::filesystem::path way; // has no links
    int links = 0;
    while (!ahead.empty()) {
        const std::filesystem::path name = std::move(ahead.back());
        ahead.pop_back();
        if (name.empty() || name == ".") continue;
        if (name == "..") {
            way = way.parent_path();
            continue;
        }
        const std::filesystem::path next = way / name;
        if (const std::optional<std::filesystem::path> target = linkTarget(next)) {
            if (++links > mostLinks) failToFollow(ELOOP, path);
            goBy(*target);
        } else {
            way = next;
        }
    }
    return way;
}

} // namespace tokwatch
