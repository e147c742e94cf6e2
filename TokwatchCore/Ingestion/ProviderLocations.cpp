#include "TokwatchCore/Ingestion/ProviderLocations.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <system_error>
#include <vector>

namespace tokwatch {
namespace {

bool isThere(const std::filesystem::path& path) {
    // A path that cannot be looked at counts as absent.
    std::error_code ignored;
    return std::filesystem::exists(path, ignored);
}

} // namespace

std::vector<std::filesystem::path> ProviderLocations::logRoots(ProviderID provider) const {
    std::vector<std::filesystem::path> roots;
    for (const std::string_view root : traits(provider).logRoots)
        if (!root.empty()) roots.push_back(home / root);
    return roots;
}

std::vector<std::filesystem::path> ProviderLocations::allLogRoots() const {
    std::vector<std::filesystem::path> all;
    for (const ProviderID provider : allCases<ProviderID>)
        std::ranges::move(logRoots(provider), std::back_inserter(all));
    return all;
}

std::filesystem::path ProviderLocations::cursorStateDB() const {
    const std::filesystem::path onLinux = cursorStateDBOnLinux();
    return isThere(onLinux)
               ? onLinux
               : home / "Library/Application Support/Cursor/User/globalStorage/state.vscdb";
}

std::filesystem::path ProviderLocations::cursorStateDBOnLinux() const {
    return home / ".config/Cursor/User/globalStorage/state.vscdb";
}

bool ProviderLocations::isPresent(ProviderID provider) const {
    const std::vector<std::filesystem::path> roots = logRoots(provider);
    if (!roots.empty() && isThere(roots.front())) return true;
    if (provider == ProviderID::codex) return isThere(codexAuthFile());
    return provider == ProviderID::cursor && isThere(cursorStateDB());
}

} // namespace tokwatch
