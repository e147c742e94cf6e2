#include "Tokwatch/Limits/AttemptFile.h"

#include "Platform/System/FileDescriptor.h"
#include "Platform/System/PrivateFiles.h"
#include "Platform/System/WholeFile.h"
#include "TokwatchCore/Records/RecordFields.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <string>
#include <system_error>

namespace tokwatch {
namespace {

constexpr std::size_t largestFile = 65'536; ///< bytes; real ones have a few hundred

/// Whether what this process knows is newer than what the file has: it could not be written, or has
/// been lost since.
bool isLater(const AttemptRecord& known, const AttemptRecord& read) {
    if (known.lastAttempt != read.lastAttempt) return known.lastAttempt > read.lastAttempt;
    return known.isAnswered && !read.isAnswered;
}

} // namespace

template<>
Json encode(const Seconds& seconds, DateCoding) {
    return seconds.count();
}

/// A delay within its bounds, whoever wrote it.
template<>
Seconds decode(const Json& json, DateCoding) {
    const double delay = coding::number(json);
    return std::clamp(Seconds{std::isnan(delay) ? 0 : delay}, RefreshPolicy::baseInterval,
                      RefreshPolicy::maximumBackoff);
}

constexpr auto fieldsOf(const AttemptRecord*) {
    using R = AttemptRecord;
    return std::tuple{Field{"lastAttempt", &R::lastAttempt}, Field{"lastSuccess", &R::lastSuccess},
                      Field{"lastStatus", &R::lastStatus}, Field{"currentDelay", &R::currentDelay},
                      Field{"isAnswered", &R::isAnswered}};
}

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
                records.emplace(provider, decode<AttemptRecord>(*record));
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
