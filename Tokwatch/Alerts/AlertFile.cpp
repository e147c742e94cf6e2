#include "Tokwatch/Alerts/AlertFile.h"

#include "Platform/System/FileDescriptor.h"
#include "Platform/System/PrivateFiles.h"
#include "Platform/System/WholeFile.h"
#include "TokwatchCore/Records/RecordFields.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace tokwatch {

template<>
Json encode(const ToldAlert& told, DateCoding dates) {
    Json json = Json::object({{"provider", rawValue(told.subject.provider)},
                              {"window", told.subject.window},
                              {"kind", rawValue(told.kind)},
                              {"toldAt", encode(told.toldAt, dates)}});
    coding::encodeField(json, "resetsAt", told.resetsAt, dates);
    json["isLeft"] = told.isLeft;
    coding::encodeField(json, "handle", told.handle, dates);
    return json;
}

template<>
ToldAlert decode(const Json& json, DateCoding dates) {
    ToldAlert told;
    told.subject.provider = decode<ProviderID>(coding::required(json, "provider"));
    coding::decodeField(json, "window", told.subject.window, dates);
    const auto kind = caseNamed<AlertKind>(coding::string(coding::required(json, "kind")));
    if (!kind) throw DecodingError("Unknown kind of alert.");
    told.kind = *kind;
    coding::decodeField(json, "toldAt", told.toldAt, dates);
    coding::decodeField(json, "resetsAt", told.resetsAt, dates);
    coding::decodeField(json, "isLeft", told.isLeft, dates);
    coding::decodeField(json, "handle", told.handle, dates);
    return told;
}

namespace {

constexpr std::size_t largestFile = 1'048'576; ///< bytes; real ones have a few thousand

ToldAlerts readTold(const std::filesystem::path& file) {
    ToldAlerts told;
    try {
        const auto text = readWholeFile(file, largestFile);
        const Json records = text ? parseJson(*text) : Json::array();
        for (const Json& record : coding::array(records)) {
            try {
                told.push_back(decode<ToldAlert>(record));
            } catch (const DecodingError&) {
                continue; // of a later version; it says nothing of the others
            }
        }
    } catch (const DecodingError&) {
        // Whoever wrote that, the next alert replaces it.
    }
    return told;
}

/// Not open where it cannot be had: the processes then go by what the others have noted before.
FileDescriptor lock(const std::filesystem::path& file, std::chrono::milliseconds patience) {
    try {
        return lockPrivately(file, patience);
    } catch (const std::system_error&) {
        return FileDescriptor();
    }
}

/// Of each subject and kind what was told last.
ToldAlerts merged(ToldAlerts told, const ToldAlerts& others) {
    for (const ToldAlert& other : others) {
        const auto same = std::ranges::find_if(told, [&other](const ToldAlert& one) {
            return one.subject == other.subject && one.kind == other.kind;
        });
        if (same == told.end())
            told.push_back(other);
        else if (same->toldAt <= other.toldAt)
            *same = other;
    }
    return told;
}

} // namespace

AlertFile::AlertFile(std::optional<std::filesystem::path> dataDirectory,
                     std::chrono::milliseconds lockPatience)
    : directory(std::move(dataDirectory)), patience(lockPatience) {}

void AlertFile::edit(const std::function<void(ToldAlerts&)>& edit) {
    const std::lock_guard guard(mutex);
    if (!directory) return edit(kept);
    const std::filesystem::path file = *directory / "alerts.json";
    const FileDescriptor held = lock(*directory / "alerts.lock", patience);
    const ToldAlerts before = readTold(file);
    ToldAlerts after = merged(before, kept);
    edit(after);
    try {
        if (after != before) replacePrivately(file, jsonText(encode(after)) + "\n");
        kept.clear();
    } catch (const std::system_error& failure) {
        if (kept.empty())
            systemLog(std::string("cannot note what was told (") + failure.what() +
                      "); after a restart it may be told again");
        kept = std::move(after);
    }
}

std::shared_ptr<AlertFile> alertFileBeside(const std::optional<std::filesystem::path>& database) {
    return std::make_shared<AlertFile>(database ? std::optional(database->parent_path())
                                                : std::nullopt);
}

} // namespace tokwatch
