#include "TokwatchCore/Ingestion/LogsElsewhere.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <string_view>
#include <system_error>

namespace tokwatch {
namespace {

namespace fs = std::filesystem;

bool isDirectory(const fs::path& path) {
    std::error_code ignored;
    return fs::is_directory(path, ignored);
}

bool isSame(const fs::path& one, const fs::path& other) {
    std::error_code ignored;
    return fs::equivalent(one, other, ignored);
}

bool isTaken(const fs::path& path) {
    std::error_code ignored;
    return fs::exists(fs::symlink_status(path, ignored));
}

/// As a shell takes it for one word.
std::string shellWord(const fs::path& path) {
    constexpr std::string_view plain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                       "0123456789/._-+,@%";
    const std::string& text = path.native();
    if (text.find_first_not_of(plain) == std::string::npos) return text;
    std::string word = "'";
    for (const char c : text)
        word += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return word + "'";
}

std::string link(const fs::path& target, const fs::path& name) {
    return "ln -s " + shellWord(target) + ' ' + shellWord(name);
}

/// `logs` is below the assistant's own folder, there as here.
std::string remedyFor(const fs::path& folder, const fs::path& own, const fs::path& logs) {
    if (!isTaken(own)) return link(folder, own);
    const fs::path read = own / logs;
    std::string command = link(folder / logs, read);
    if (!isTaken(read)) return command;
    return "mv " + shellWord(read) + ' ' + shellWord(read.native() + ".before") + " && " + command;
}

class Search {
  public:
    explicit Search(const ProviderLocations& l) : locations(l) {}

    void look(ProviderID provider, const fs::path& folder, const std::string& toldBy) {
        const fs::path root(traits(provider).logRoots.front());
        const fs::path own = locations.home / *root.begin();
        const fs::path logs = root.lexically_relative(*root.begin());
        if (!isDirectory(folder / logs) || isSame(folder / logs, own / logs)) return;
        const auto isKnown = [&](const LogsElsewhere& place) {
            return isSame(place.folder, folder);
        };
        if (std::ranges::any_of(found, isKnown)) return;
        found.push_back({provider, folder, toldBy, remedyFor(folder, own, logs)});
    }

    std::vector<LogsElsewhere> found;

  private:
    const ProviderLocations& locations;
};

} // namespace

std::vector<LogsElsewhere>
logsElsewhere(const ProviderLocations& locations,
              const std::function<std::optional<std::string>(const char* name)>& variable) {
    Search search(locations);
    for (const ProviderID provider : allCases<ProviderID>) {
        const char* name = traits(provider).folderVariable;
        if (name == nullptr) continue;
        // Some people name several folders.
        std::istringstream folders(variable(name).value_or(""));
        for (std::string folder; std::getline(folders, folder, ',');)
            if (folder.starts_with('/')) search.look(provider, folder, name);
    }
    search.look(ProviderID::claude, locations.home / ".config/claude", "");
    return std::move(search.found);
}

std::vector<LogsElsewhere> logsElsewhere(const ProviderLocations& locations) {
    return logsElsewhere(locations, [](const char* name) -> std::optional<std::string> {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): the main thread alone asks and changes.
        const char* value = std::getenv(name);
        return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
    });
}

} // namespace tokwatch
