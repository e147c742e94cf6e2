#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tokwatch::testing {

/// A directory of its own for one test, removed with all it holds.
class TemporaryDirectory {
  public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::filesystem::path& path() const { return directory; }
    std::filesystem::path operator/(std::string_view relative) const {
        return directory / relative;
    }

    /// Writes a file, making its directories; answers its path.
    std::filesystem::path write(std::string_view relative, std::string_view contents) const;
    void append(std::string_view relative, std::string_view contents) const;
    std::string read(std::string_view relative) const;

  private:
    std::filesystem::path directory;
};

} // namespace tokwatch::testing
