#include "Platform/System/PrivateFiles.h"

#include "Platform/System/ActingAsOwner.h"
#include "Platform/System/OwnLinks.h"
#include "Platform/System/WholeFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace tokwatch {
namespace {

constexpr mode_t privateFile = 0600;
constexpr mode_t readableFile = 0644;
constexpr mode_t permissionBits = 0777;
constexpr mode_t privateDirectory = 0700;
constexpr mode_t othersRights = 077;
constexpr std::chrono::milliseconds lockPause{2};
/// What replaces a file is called so until it does, by mkostemp. Of no length that depends on the
/// file's name, and like nothing that anybody else would call a file beside it.
constexpr std::string_view replacementName = ".tokwatch-replacing-XXXXXX";
constexpr std::string_view replacementStart = ".tokwatch-replacing-";

[[noreturn]] void fail(int error, const std::filesystem::path& path) {
    throw std::system_error(error, std::generic_category(), path.string());
}

/// Who made the file beforehand would see and change what is kept in it. One that is closed to
/// others and can be opened nevertheless lies where users have other numbers, as on some networks.
void refuseAnothers(const struct stat& status, const std::filesystem::path& file) {
    if ((status.st_mode & othersRights) != 0 && !isTrustedOwner(status.st_uid, file))
        throw ForeignFileError(file, "belongs to another user");
}

/// The new file's descriptor; not open where there is a file already.
FileDescriptor createNew(const std::filesystem::path& path) {
    const ActingAsOwner owner(path.parent_path());
    constexpr int flags = O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    FileDescriptor made(::open(path.c_str(), flags, privateFile));
    if (!made.isOpen() && errno != EEXIST) fail(errno, path);
    if (made.isOpen() && ::fchmod(made.get(), privateFile) != 0) fail(errno, path);
    return made;
}

/// A file beside its target, which takes the target's place or vanishes. It is locked while it
/// exists, which tells it from one whose writer was killed.
class ReplacementFile {
  public:
    ReplacementFile(std::filesystem::path replaced, mode_t permissions)
        : target(std::move(replaced)) {
        do {
            path = (target.parent_path() / replacementName).string();
            descriptor = FileDescriptor(::mkostemp(path.data(), O_CLOEXEC));
            if (!descriptor.isOpen()) {
                const int error = errno;
                path.clear();
                fail(error, target);
            }
            ::fchmod(descriptor.get(), permissions); // the umask may have taken more
        } while (!lock());
    }
    ~ReplacementFile() {
        if (!path.empty()) ::unlink(path.c_str());
    }
    ReplacementFile(const ReplacementFile&) = delete;
    ReplacementFile& operator=(const ReplacementFile&) = delete;

    void write(std::string_view text) const {
        while (!text.empty()) {
            const ssize_t count = ::write(descriptor.get(), text.data(), text.size());
            if (count >= 0)
                text.remove_prefix(static_cast<std::size_t>(count));
            else if (errno != EINTR)
                fail(errno, target);
        }
    }

    /// Without this a power cut could leave the new name with none of the bytes.
    void waitForDisk() const {
        if (::fsync(descriptor.get()) != 0) fail(errno, target);
    }

    void replace() {
        if (::rename(path.c_str(), target.c_str()) != 0) fail(errno, target);
        path.clear();
    }

  private:
    /// False where somebody who cleans up was faster, and the file is gone.
    bool lock() const {
        struct stat status = {};
        return ::flock(descriptor.get(), LOCK_EX) != 0 || ::fstat(descriptor.get(), &status) != 0 ||
               status.st_nlink > 0;
    }

    std::filesystem::path target;
    std::string path; ///< empty once it has taken the target's place
    FileDescriptor descriptor;
};

bool isReplacement(const std::string& name) {
    return name.size() == replacementName.size() && name.starts_with(replacementStart);
}

void removeIfAbandoned(const std::filesystem::path& path) {
    const FileDescriptor found(
        ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status = {};
    if (found.isOpen() && ::fstat(found.get(), &status) == 0 && S_ISREG(status.st_mode) &&
        ::flock(found.get(), LOCK_EX | LOCK_NB) == 0)
        ::unlink(path.c_str());
}

/// Of all files in the directory. What cannot be listed or removed is no reason not to write.
void removeAbandoned(const std::filesystem::path& directory) {
    std::error_code ignored;
    std::vector<std::filesystem::path> found;
    std::filesystem::directory_iterator entry(directory, ignored);
    for (; entry != std::filesystem::directory_iterator() && !ignored; entry.increment(ignored)) {
        if (isReplacement(entry->path().filename().string())) found.push_back(entry->path());
    }
    for (const std::filesystem::path& path : found)
        removeIfAbandoned(path);
}

enum class Lasting { yes, no };

void replace(const std::filesystem::path& file, std::string_view contents, mode_t permissions,
             Lasting lasting = Lasting::yes) {
    const std::filesystem::path real = followOwnLinks(file);
    // An administrator may replace anything, also the device that a link was pointed at.
    struct stat status = {};
    if (::stat(real.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) fail(EINVAL, file);
    const ActingAsOwner owner(real.parent_path());
    removeAbandoned(real.parent_path());
    ReplacementFile replacement(real, permissions);
    replacement.write(contents);
    if (lasting == Lasting::yes) replacement.waitForDisk();
    replacement.replace();
}

/// The file, or its directory where the file cannot be opened.
FileDescriptor openLock(const std::filesystem::path& file) {
    try {
        return openPrivately(file);
    } catch (const std::system_error&) {
        const std::filesystem::path directory = followOwnLinks(file.parent_path());
        return FileDescriptor(
            ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    }
}

} // namespace

void makePrivateDirectory(const std::filesystem::path& directory) {
    std::filesystem::path made;
    for (const std::filesystem::path& name : directory) {
        const ActingAsOwner owner(made);
        made /= name;
        if (::mkdir(made.c_str(), privateDirectory) == 0) {
            if (::chmod(made.c_str(), privateDirectory) != 0) fail(errno, made);
            continue;
        }
        const int obstacle = errno;
        struct stat status = {};
        made = followOwnLinks(made);
        if (::lstat(made.c_str(), &status) != 0) fail(obstacle == EEXIST ? errno : obstacle, made);
        if (!S_ISDIR(status.st_mode)) fail(ENOTDIR, made);
    }
}

std::filesystem::path createPrivately(const std::filesystem::path& file) {
    std::filesystem::path real = followOwnLinks(file);
    struct stat present = {};
    if (!createNew(real).isOpen() && ::lstat(real.c_str(), &present) == 0)
        refuseAnothers(present, real);
    return real;
}

FileDescriptor openPrivately(const std::filesystem::path& file) {
    const std::filesystem::path real = followOwnLinks(file);
    FileDescriptor opened = createNew(real);
    if (!opened.isOpen())
        opened = FileDescriptor(::open(real.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!opened.isOpen()) fail(errno, file);
    struct stat status = {};
    if (::fstat(opened.get(), &status) != 0 || !S_ISREG(status.st_mode)) fail(EINVAL, file);
    refuseAnothers(status, real);
    return opened;
}

FileDescriptor lockPrivately(const std::filesystem::path& file,
                             std::chrono::milliseconds patience) {
    FileDescriptor lock;
    try {
        lock = openLock(file);
    } catch (const std::system_error&) {
        return lock; // another user chose where it would be
    }
    while (lock.isOpen() && ::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        if ((errno != EWOULDBLOCK && errno != EINTR) || patience <= lockPause)
            return FileDescriptor();
        std::this_thread::sleep_for(lockPause);
        patience -= lockPause;
    }
    return lock;
}

void replacePrivately(const std::filesystem::path& file, std::string_view contents) {
    replace(file, contents, privateFile);
}

void replaceUnlessSame(const std::filesystem::path& file, std::string_view contents) {
    const std::filesystem::path real = followOwnLinks(file);
    struct stat present = {};
    if (::lstat(real.c_str(), &present) == 0 && isTrustedOwner(present.st_uid, real) &&
        readWholeFile(real, contents.size()) == contents)
        return;
    replace(file, contents, privateFile, Lasting::no);
}

void replaceForOthers(const std::filesystem::path& file, std::string_view contents) {
    struct stat present = {};
    const bool exists = ::stat(file.c_str(), &present) == 0;
    replace(file, contents, exists ? present.st_mode & permissionBits : readableFile);
}

} // namespace tokwatch
