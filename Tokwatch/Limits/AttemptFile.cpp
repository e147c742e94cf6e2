#include "Tokwatch/Limits/AttemptFile.h"

#include "Platform/System/FileDescriptor.h"
#include "Platform/System/PrivateFiles.h"
#include "Platform/System/WholeFile.h"
#include "TokwatchCore/Records/RecordCoding.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <string>
#include <system_error>

namespace tokwatch {
namespace {

constexpr std::size_t largestFile = 65'536; ///< bytes; real ones have a few hundred

Json encode(const AttemptRecord& record) {
    Json json = Json::object();
    const auto add = [&json](const char* key, const std::optional<Date>& date) {
        if (date) json[key] = tokwatch::encode(*date, DateCoding::secondsSince2001);
    };
    add("lastAttempt", record.lastAttempt);
    add("lastSuccess", record.lastSuccess);
    if (record.lastStatus) json["lastStatus"] = tokwatch::encode(*record.lastStatus);
    json["currentDelay"] = record.currentDelay.count();
    json["isAnswered"] = record.isAnswered;
    return json;
}

AttemptRecord decode(const Json& json) {
    const auto date = [&json](const char* key) -> std::optional<Date> {
        const Json* value = coding::optional(json, key);
        if (value == nullptr) return std::nullopt;
        return decodeDate(*value, DateCoding::secondsSince2001);
    };
    AttemptRecord record;
    record.lastAttempt = date("lastAttempt");
    record.lastSuccess = date("lastSuccess");
    if (const Json* status = coding::optional(json, "lastStatus"))
        record.lastStatus = decodeProviderStatus(*status);
    const double delay = coding::number(coding::required(json, "currentDelay"));
    record.currentDelay = std::clamp(Seconds{std::isnan(delay) ? 0 : delay},
                                     RefreshPolicy::baseInterval, RefreshPolicy::maximumBackoff);
    record.isAnswered = coding::boolean(coding::required(json, "isAnswered"));
    return record;
}

/// Whether what this process knows is newer than what the file has: it could not be written, or has
/// been lost since.
bool isLater(const AttemptRecord& known, const AttemptRecord& read) {
    if (known.lastAttempt != read.lastAttempt) return known.lastAttempt > read.lastAttempt;
    return known.isAnswered && !read.isAnswered;
}

} // namespace

AttemptFile::AttemptFile(std::filesystem::path dataDirectory,
                         std::chrono::milliseconds lockPatience)
    : directory(std::move(dataDirectory)), patience(lockPatience) {}

AttemptRecord AttemptFile::edit(ProviderID provider, const Edit& edit) {
    const std::lock_guard guard(mutex);
    // Without the lock the processes go by what the others have noted before.
    const FileDescriptor held = lockPrivately(directory / "attempts.lock", patience);
    Records records = read();
    AttemptRecord& record = records[provider];
    if (const auto known = own.find(provider); known != own.end() && isLater(known->second, record))
        record = known->second;
    AttemptRecord edited = record;
    if (edit(edited)) {
        record = edited;
        write(records);
    }
    own.insert_or_assign(provider, record);
    return record;
}

AttemptFile::Records AttemptFile::read() const {
    Records records;
    try {
        const auto text = readWholeFile(directory / "attempts.json", largestFile);
        if (!text) return records;
        const Json json = parseJson(*text);
        for (const ProviderID provider : allCases<ProviderID>) {
            const std::string key(rawValue(provider));
            if (const Json* record = coding::optional(coding::object(json), key.c_str()))
                records.emplace(provider, decode(*record));
        }
    } catch (const DecodingError&) {
        // Whoever wrote that, the next attempt replaces it.
    }
    return records;
}

void AttemptFile::write(const Records& records) const {
    Json json = Json::object();
    for (const auto& [provider, record] : records)
        json[std::string(rawValue(provider))] = encode(record);
    try {
        replacePrivately(directory / "attempts.json", jsonText(json) + "\n");
    } catch (const std::system_error&) {
        // This process keeps the record; a log line at each attempt would be noise.
    }
}

std::shared_ptr<AttemptLedger>
attemptLedgerBeside(const std::optional<std::filesystem::path>& database) {
    if (!database) return std::make_shared<MemoryAttemptLedger>();
    return std::make_shared<AttemptFile>(database->parent_path());
}

} // namespace tokwatch
