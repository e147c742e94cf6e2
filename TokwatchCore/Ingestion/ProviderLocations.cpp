#include "TokwatchCore/Ingestion/ProviderLocations.h"

#include "Platform/System/Places.h"

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

const ProviderLocations& ProviderLocations::shared() {
    static const ProviderLocations own{homeDirectory()};
    return own;
}

std::filesystem::path ProviderLocations::claudeProjects() const {
    return home / ".claude/projects";
}

std::array<std::filesystem::path, 2> ProviderLocations::codexRoots() const {
    return {home / ".codex/sessions", home / ".codex/archived_sessions"};
}

std::filesystem::path ProviderLocations::grokSessions() const {
    return home / ".grok/sessions";
}

std::vector<std::filesystem::path> ProviderLocations::logRoots(ProviderID provider) const {
    switch (provider) {
    case ProviderID::claude:
        return {claudeProjects()};
    case ProviderID::codex: {
        const auto roots = codexRoots();
        return {roots.begin(), roots.end()};
    }
    case ProviderID::grok:
        return {grokSessions()};
    case ProviderID::cursor:
        return {};
    }
    return {};
}

std::filesystem::path ProviderLocations::codexHome() const {
    return home / ".codex";
}

std::filesystem::path ProviderLocations::codexAuthFile() const {
    return home / ".codex/auth.json";
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
    switch (provider) {
    case ProviderID::claude:
        return isThere(claudeProjects());
    case ProviderID::codex:
        return isThere(codexRoots()[0]) || isThere(codexAuthFile());
    case ProviderID::grok:
        return isThere(grokSessions());
    case ProviderID::cursor:
        return isThere(cursorStateDB());
    }
    return false;
}

} // namespace tokwatch
