#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>

struct stat;

namespace tokwatch {

/// What the file system says of a file.
struct FileAttributes {
    std::uint64_t inode = 0;
    std::int64_t size = 0;     ///< bytes
    std::int64_t modified = 0; ///< nanoseconds since 1970
};

FileAttributes attributesOf(const struct stat& status);

/// Throws std::system_error naming the file's last component.
FileAttributes fileAttributes(const std::filesystem::path& file);

/// A file open for reading; closed on destruction. Failures are std::system_error.
class InputFile {
  public:
    explicit InputFile(const std::filesystem::path& file);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    FileAttributes attributes() const;
    /// Reads up to `count` bytes at `offset`; fewer only at the end of the file.
    std::size_t read(char* into, std::size_t count, std::int64_t offset) const;

  private:
    [[noreturn]] void fail() const;

    std::filesystem::path path;
    int descriptor;
};

} // namespace tokwatch
