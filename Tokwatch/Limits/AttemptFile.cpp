#include "Tokwatch/Limits/AttemptFile.h"

#include "Platform/System/FileDescriptor.h"
#include "Platform/System/PrivateFiles.h"
#include "Platform/System/WholeFile.h"
#include "TokwatchCore/Records/RecordFields.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <QByteArray>
#include <QCryptographicHash>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <string>
#include <system_error>
#include <utility>

namespace tokwatch {

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

namespace {

constexpr std::size_t largestFile = 65'536; ///< bytes; real ones have a few hundred

/// Whether one record of a provider is newer than another: a file could not be written, or has been
/// lost since.
bool isLater(const AttemptRecord& one, const AttemptRecord& other) {
    if (one.lastAttempt != other.lastAttempt) return one.lastAttempt > other.lastAttempt;
    return one.isAnswered && !other.isAnswered;
}

using Records = std::map<ProviderID, AttemptRecord>;

void addLater(Records& records, const Records& others) {
    for (const auto& [provider, other] : others) {
        const auto [known, isNew] = records.try_emplace(provider, other);
        if (!isNew && isLater(other, known->second)) known->second = other;
    }
}

std::filesystem::path fileIn(const std::filesystem::path& directory) {
    return directory / "attempts.json";
}

/// One that cannot be read, of a later version, counts as none and says nothing of the others.
void addReadable(Records& records, ProviderID provider, const Json& record) {
    try {
        records.emplace(provider, decode<AttemptRecord>(record));
    } catch (const DecodingError&) {
        records.erase(provider);
    }
}

Records readRecords(const std::filesystem::path& directory) {
    Records records;
    try {
        const auto text = readWholeFile(fileIn(directory), largestFile);
        if (!text) return records;
        const Json json = parseJson(*text);
        for (const ProviderID provider : allCases<ProviderID>) {
            const std::string key(rawValue(provider));
            if (const Json* record = coding::optional(coding::object(json), key.c_str()))
                addReadable(records, provider, *record);
        }
    } catch (const DecodingError&) {
        // Whoever wrote that, the next attempt replaces it.
    }
    return records;
}

std::string textOf(const Records& records) {
    Json json = Json::object();
    for (const auto& [provider, record] : records)
        json[std::string(rawValue(provider))] = encode(record);
    return jsonText(json) + "\n";
}

/// Of this user, in memory, and gone with the session; each data directory has its own below it.
std::optional<std::filesystem::path> refugeOf(const std::filesystem::path& directory) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the main thread alone asks and changes.
    const char* given = std::getenv("XDG_RUNTIME_DIR");
    const std::filesystem::path session = given == nullptr ? "" : given;
    if (!session.is_absolute()) return std::nullopt;
    const auto path = QByteArray::fromStdString(directory.lexically_normal().string());
    const QByteArray name = QCryptographicHash::hash(path, QCryptographicHash::Sha1).toHex();
    return session / "Tokwatch" / name.toStdString();
}

} // namespace

AttemptFile::AttemptFile(std::filesystem::path dataDirectory,
                         std::optional<std::filesystem::path> secondDirectory,
                         std::chrono::milliseconds lockPatience)
    : directory(std::move(dataDirectory)), refuge(std::move(secondDirectory)),
      patience(lockPatience) {}

AttemptLedger::Entry AttemptFile::edit(ProviderID provider, const Edit& edit) {
    const std::lock_guard guard(mutex);
    try {
        editIn(directory, provider, edit);
        return {own[provider]};
    } catch (const std::system_error& failure) {
        try {
            if (refuge) {
                makePrivateDirectory(*refuge);
                editIn(*refuge, provider, edit);
                return {own[provider]};
            }
        } catch (const std::system_error&) {
            // The first reason is the one to be told.
        }
        tell(failure.what());
    }
    AttemptRecord& record = own[provider];
    AttemptRecord edited = record;
    if (edit(edited)) record = edited;
    return {record, false};
}

/// What is known of all providers, wherever it was kept.
AttemptFile::Records AttemptFile::known() const {
    Records records = readRecords(directory);
    if (refuge) addLater(records, readRecords(*refuge));
    addLater(records, own);
    return records;
}

/// Throws std::system_error where the record cannot be kept there.
void AttemptFile::editIn(const std::filesystem::path& place, ProviderID provider,
                         const Edit& edit) {
    // Without the lock the processes go by what the others have noted before.
    const FileDescriptor held = lockPrivately(place / "attempts.lock", patience);
    Records records = known();
    AttemptRecord edited = records[provider];
    own.insert_or_assign(provider, edited);
    if (!edit(edited)) return;
    records.insert_or_assign(provider, edited);
    replacePrivately(fileIn(place), textOf(records));
    own.insert_or_assign(provider, edited);
}

void AttemptFile::tell(const std::string& reason) {
    if (std::exchange(isTold, true)) return;
    systemLog("cannot note when a service was asked (" + reason +
              "); until that can be noted, none is asked");
}

std::shared_ptr<AttemptLedger>
attemptLedgerBeside(const std::optional<std::filesystem::path>& database) {
    if (!database) return std::make_shared<MemoryAttemptLedger>();
    const std::filesystem::path directory = database->parent_path();
    return std::make_shared<AttemptFile>(directory, refugeOf(directory));
}

} // namespace tokwatch
