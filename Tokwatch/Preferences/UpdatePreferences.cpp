#include "Tokwatch/Preferences/UpdatePreferences.h"

#include "Tokwatch/Preferences/PlainSettings.h"

#include <utility>

namespace tokwatch {
namespace {

constexpr const char* lastCheckKey = "lastCheck";
constexpr const char* lastDateSeenKey = "lastDateSeen";
constexpr const char* manifestKey = "manifest";
constexpr const char* signatureKey = "signature";

void storeDate(SettingsStorage& settings, const char* key, std::optional<Date> date) {
    if (date)
        settings.setValue(key, unixSeconds(*date));
    else
        settings.remove(key);
}

bool isBase64(std::string_view text) {
    return bool(QByteArray::fromBase64Encoding(
        QByteArray(text.data(), static_cast<qsizetype>(text.size())),
        QByteArray::Base64Encoding | QByteArray::AbortOnBase64DecodingErrors));
}

QByteArray storedBytes(const SettingsStorage& settings, const char* key) {
    return QByteArray::fromBase64(
        QByteArray::fromStdString(storedText(settings, key).value_or("")));
}

} // namespace

UpdatePreferences::UpdatePreferences(std::unique_ptr<SettingsStorage> settings)
    : SettingsGroup(std::move(settings)),
      agreed(list, "agreed", "ask once a day whether there is a new version", false) {
    list.kept = {{lastCheckKey, keptTimes, isText<Date>},
                 {lastDateSeenKey, keptTimes, isText<Date>},
                 // What these are worth their signature tells.
                 {manifestKey, "base64", isBase64},
                 {signatureKey, "base64", isBase64}};
    tellFaults();
}

UpdatePreferences::Memory UpdatePreferences::memory() const {
    const SettingsStorage& stored = *list.storage;
    return {storedDate(stored, lastCheckKey), storedDate(stored, lastDateSeenKey),
            storedBytes(stored, manifestKey), storedBytes(stored, signatureKey)};
}

void UpdatePreferences::setMemory(const Memory& memory) {
    list.onStore();
    SettingsStorage& stored = *list.storage;
    storeDate(stored, lastCheckKey, memory.lastCheck);
    storeDate(stored, lastDateSeenKey, memory.lastDateSeen);
    // In letters alone: line feeds of a document would be escaped twice over.
    storeText(stored, manifestKey, memory.manifest.toBase64().toStdString());
    storeText(stored, signatureKey, memory.signature.toBase64().toStdString());
}

std::filesystem::path updateSettingsPath() {
    return settingsPath().parent_path() / "Updates.conf";
}

} // namespace tokwatch
