#include "Tokwatch/Display/HomeRelative.h"

namespace tokwatch {

std::string homeRelative(std::string_view path, std::string_view home) {
    while (home.ends_with('/'))
        home.remove_suffix(1);
    const bool isBelow = !home.empty() && path.starts_with(home) &&
                         (path.size() == home.size() || path[home.size()] == '/');
    return isBelow ? std::string("~").append(path.substr(home.size())) : std::string(path);
}

} // namespace tokwatch
