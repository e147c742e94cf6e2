#include "Tokwatch/Display/HomePath.h"

namespace tokwatch {

std::string homePath(const std::filesystem::path& path, const std::filesystem::path& home) {
    const std::string whole = path.string();
    const std::string prefix = home.string() + '/';
    return whole.starts_with(prefix) ? "~/" + whole.substr(prefix.size()) : whole;
}

} // namespace tokwatch
