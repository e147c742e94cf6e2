#include "Tokwatch/Preferences/UpdatePreferences.h"

#include <cmath>

namespace tokwatch {
namespace {

constexpr const char* lastCheckKey = "lastCheck";
constexpr const char* lastDateSeenKey = "lastDateSeen";
constexpr const char* manifestKey = "manifest";
constexpr const char* signatureKey = "signature";

std::optional<Date> storedDate(const QSettings& settings, const char* key) {
    bool isNumber = false;
    const double seconds = settings.value(key).toDouble(&isNumber);
    if (!isNumber || !std::isfinite(seconds)) return std::nullopt;
    return dateFromUnixSeconds(seconds);
}

void storeDate(QSettings& settings, const char* key, std::optional<Date> date) {
    if (date)
        settings.setValue(key, unixSeconds(*date));
    else
        settings.remove(key);
}

QByteArray storedBytes(const QSettings& settings, const char* key) {
    return QByteArray::fromBase64(
        QByteArray::fromStdString(storedText(settings, key).value_or("")));
}

} // namespace

UpdatePreferences::UpdatePreferences(QSettings& settings)
    : SettingsGroup(settings),
      agreed(list, "agreed", "ask once a day whether there is a new version", false) {
    tellFaults();
}

UpdatePreferences::Memory UpdatePreferences::memory() const {
    const QSettings& stored = list.storage;
    return {storedDate(stored, lastCheckKey), storedDate(stored, lastDateSeenKey),
            storedBytes(stored, manifestKey), storedBytes(stored, signatureKey)};
}

void UpdatePreferences::setMemory(const Memory& memory) {
    QSettings& stored = list.storage;
    if (!storageIsSound(stored)) return;
    storeDate(stored, lastCheckKey, memory.lastCheck);
    storeDate(stored, lastDateSeenKey, memory.lastDateSeen);
    // In letters alone: line feeds of a document would be escaped twice over.
    storeText(stored, manifestKey, memory.manifest.toBase64().toStdString());
    storeText(stored, signatureKey, memory.signature.toBase64().toStdString());
}

} // namespace tokwatch
