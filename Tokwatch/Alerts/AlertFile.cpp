#include "Tokwatch/Alerts/AlertFile.h"

#include "Platform/System/FileDescriptor.h"
#include "Platform/System/PrivateFiles.h"
#include "Platform/System/WholeFile.h"
#include "TokwatchCore/Records/RecordFields.h"
#include "TokwatchCore/Support/SystemLog.h"

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
    return told;
}

namespace {

constexpr std::size_t largestFile = 1'048'576; ///< bytes; real ones have a few thousand

ToldAlerts readTold(const std::filesystem::path& file) {
    try {
        if (const auto text = readWholeFile(file, largestFile))
            return decode<ToldAlerts>(parseJson(*text));
    } catch (const DecodingError&) {
        // Whoever wrote that, the next alert replaces it.
    }
    return {};
}

} // namespace

AlertFile::AlertFile(std::optional<std::filesystem::path> dataDirectory,
                     std::chrono::milliseconds lockPatience)
    : directory(std::move(dataDirectory)), patience(lockPatience) {
    if (!directory) kept.emplace();
}

void AlertFile::edit(const std::function<void(ToldAlerts&)>& edit) {
    const std::lock_guard guard(mutex);
    if (kept) return edit(*kept);
    editInFile(edit);
}

void AlertFile::editInFile(const std::function<void(ToldAlerts&)>& edit) {
    const std::filesystem::path file = *directory / "alerts.json";
    // Without the lock the processes go by what the others have noted before.
    const FileDescriptor held = lockPrivately(*directory / "alerts.lock", patience);
    const ToldAlerts before = readTold(file);
    ToldAlerts after = before;
    edit(after);
    if (after == before) return;
    try {
        replacePrivately(file, jsonText(encode(after)) + "\n");
    } catch (const std::system_error& failure) {
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
