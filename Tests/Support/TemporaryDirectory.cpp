#include "Tests/Support/TemporaryDirectory.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <system_error>

namespace tokwatch::testing {

TemporaryDirectory::TemporaryDirectory() {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "tokwatch-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::system_error(errno, std::generic_category(), "mkdtemp");
    directory = pattern;
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(directory, ignored);
}

std::filesystem::path TemporaryDirectory::write(std::string_view relative,
                                                std::string_view contents) const {
    const std::filesystem::path file = directory / relative;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << contents;
    return file;
}

void TemporaryDirectory::append(std::string_view relative, std::string_view contents) const {
    std::ofstream(directory / relative, std::ios::binary | std::ios::app) << contents;
}

std::string TemporaryDirectory::read(std::string_view relative) const {
    std::ifstream file(directory / relative, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace tokwatch::testing
