#include "Tokwatch/CommandLine/Doctor/Examinations.h"
#include "Tokwatch/Report/ResponseFiles.h"
#include "TokwatchCore/Ingestion/LogFiles.h"
#include "TokwatchCore/Ingestion/LogsElsewhere.h"
#include "TokwatchCore/Support/Amounts.h"

#include <algorithm>
#include <array>
#include <system_error>

namespace tokwatch {
namespace {

namespace fs = std::filesystem;

Finding note(ProviderID provider, std::string text) {
    return {std::string(displayName(provider)), Health::note, std::move(text)};
}

std::string told(const LogsElsewhere& place) {
    const std::string where = place.toldBy.empty()
                                  ? place.folder.string() + " is there"
                                  : place.toldBy + " says " + place.folder.string();
    return where + ", which is not read; to count what is there: " + place.remedy;
}

/// How many entries below the folder are such. What cannot be listed has none.
template<typename Predicate>
std::int64_t count(const fs::path& folder, Predicate isSuch) {
    std::error_code failure;
    std::int64_t count = 0;
    fs::recursive_directory_iterator entry(folder, fs::directory_options::skip_permission_denied,
                                           failure);
    for (; !failure && entry != fs::recursive_directory_iterator(); entry.increment(failure))
        if (isSuch(*entry)) ++count;
    return count;
}

bool isCompressedRollout(const fs::directory_entry& entry) {
    return entry.path().filename().native().ends_with(".jsonl.zst");
}

/// A folder with files, of which none tells what was used.
bool isSilentSession(const fs::directory_entry& entry) {
    std::error_code failure;
    if (!entry.is_directory(failure)) return false;
    bool hasFiles = false;
    for (const fs::directory_entry& inner : fs::directory_iterator(entry.path(), failure)) {
        std::error_code ignored;
        if (!inner.is_regular_file(ignored)) continue;
        if (isLogName(ProviderID::grok, inner.path().filename().native())) return false;
        hasFiles = true;
    }
    return hasFiles;
}

std::int64_t codexFilesOfTheOldForm(const ProviderLocations& locations) {
    const std::array providers{ProviderID::codex};
    constexpr Date ever{Seconds{0}};
    return std::ranges::count_if(ResponseFiles(locations).read(providers, ever).files,
                                 [](const auto& file) { return file->lines.hasCumulativeOnly(); });
}

} // namespace

std::vector<Finding> examineUncounted(const ProviderLocations& locations) {
    std::vector<Finding> findings;
    for (const LogsElsewhere& place : logsElsewhere(locations))
        findings.push_back(note(place.provider, told(place)));
    if (locations.isPresent(ProviderID::claude))
        findings.push_back(note(ProviderID::claude,
                                "Claude Code deletes its files after 30 days unless "
                                "\"cleanupPeriodDays\" in its settings.json says otherwise; what "
                                "was counted stays"));
    const auto add = [&](ProviderID provider, std::int64_t number, const char* thing,
                         const char* why) {
        if (number > 0) findings.push_back(note(provider, counted(number, thing) + why));
    };
    add(ProviderID::codex, codexFilesOfTheOldForm(locations), "file",
        " in the form of older versions, which tells running totals alone, cannot be counted");
    std::int64_t compressed = 0;
    for (const fs::path& root : locations.logRoots(ProviderID::codex))
        compressed += count(root, isCompressedRollout);
    add(ProviderID::codex, compressed, "compressed file", " (.jsonl.zst) cannot be counted");
    for (const fs::path& root : locations.logRoots(ProviderID::grok))
        add(ProviderID::grok, count(root, isSilentSession), "session",
            " without usage.json cannot be counted");
    return findings;
}

} // namespace tokwatch
