#include "Platform/System/FileAccess.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace tokwatch {
namespace {

[[noreturn]] void throwErrno(const std::filesystem::path& file) {
    throw std::system_error(errno, std::generic_category(), file.filename().string());
}

} // namespace

FileAttributes attributesOf(const struct stat& status) {
    return {status.st_ino, status.st_size,
            static_cast<std::int64_t>(status.st_mtim.tv_sec) * 1'000'000'000 +
                status.st_mtim.tv_nsec};
}

FileAttributes fileAttributes(const std::filesystem::path& file) {
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0) throwErrno(file);
    return attributesOf(status);
}

InputFile::InputFile(const std::filesystem::path& file)
    // Not blocking: what was a regular file when it was listed may have become a pipe since.
    : path(file), descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    if (descriptor < 0) fail();
}

InputFile::~InputFile() {
    ::close(descriptor);
}

void InputFile::fail() const {
    throwErrno(path);
}

FileAttributes InputFile::attributes() const {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) fail();
    return attributesOf(status);
}

std::size_t InputFile::read(char* into, std::size_t count, std::int64_t offset) const {
    std::size_t got = 0;
    while (got < count) {
        const ssize_t n =
            ::pread(descriptor, into + got, count - got, offset + static_cast<std::int64_t>(got));
        if (n == 0) break;
        if (n > 0) {
            got += static_cast<std::size_t>(n);
        } else if (errno != EINTR) {
            fail();
        }
    }
    return got;
}

} // namespace tokwatch
