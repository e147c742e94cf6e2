#include "Platform/System/WholeFile.h"

#include "Platform/System/FileDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace tokwatch {

std::optional<std::string> readWholeFile(const std::filesystem::path& file, std::size_t limit,
                                         std::error_code& obstacle) {
    const auto refuse = [&obstacle](int error) {
        obstacle.assign(error, std::generic_category());
        return std::nullopt;
    };
    // Without O_NONBLOCK, a named pipe at the path would hold us up.
    const FileDescriptor input(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status = {};
    if (!input.isOpen() || ::fstat(input.get(), &status) != 0) return refuse(errno);
    if (!S_ISREG(status.st_mode)) return refuse(EINVAL);
    if (static_cast<std::size_t>(status.st_size) > limit) return refuse(EFBIG);
    // One byte more than there was: a file that grows meanwhile is read to its end or refused.
    std::string text(static_cast<std::size_t>(status.st_size) + 1, '\0');
    std::size_t got = 0;
    while (true) {
        const ssize_t count = ::read(input.get(), text.data() + got, text.size() - got);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return refuse(errno);
        if (count == 0) break;
        got += static_cast<std::size_t>(count);
        if (got > limit) return refuse(EFBIG);
        if (got == text.size()) text.resize(got * 2);
    }
    text.resize(got);
    return text;
}

std::optional<std::string> readWholeFile(const std::filesystem::path& file, std::size_t limit) {
    std::error_code ignored;
    return readWholeFile(file, limit, ignored);
}

} // namespace tokwatch
