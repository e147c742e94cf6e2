#include "Tokwatch/Preferences/SettingsStorage.h"

#include "Platform/System/ActingAsOwner.h"
#include "Tokwatch/Preferences/SettingsFile.h"

#include <QFile>
#include <QSettings>

#include <utility>

namespace tokwatch {

SettingsStorage::SettingsStorage(std::filesystem::path itsFile) : file(std::move(itsFile)) {}

SettingsStorage::~SettingsStorage() {
    if (!changes.empty()) save();
}

QVariant SettingsStorage::value(const QString& key) const {
    const auto found = present.find(key);
    return found == present.end() ? QVariant() : found->second;
}

void SettingsStorage::setValue(const QString& key, const QVariant& value) {
    present.insert_or_assign(key, value);
    changes.insert_or_assign(key, value);
}

void SettingsStorage::remove(const QString& key) {
    const QString group = key + u'/';
    for (auto at = present.lower_bound(key); at != present.end() && at->first.startsWith(key);) {
        if (at->first == key || at->first.startsWith(group)) {
            changes.insert_or_assign(at->first, std::nullopt);
            at = present.erase(at);
        } else {
            ++at;
        }
    }
}

void SettingsStorage::takeOver(const QSettings& toolkit) {
    present.clear();
    for (const QString& key : toolkit.allKeys())
        if (!key.isEmpty()) present.emplace(key, toolkit.value(key)); // it complains of that one
    wasEmpty = present.empty();
    for (const auto& [key, value] : changes)
        if (value)
            present.insert_or_assign(key, *value);
        else
            present.erase(key);
}

bool SettingsStorage::load() {
    const ActingAsOwner owner(file.parent_path());
    if (settingsObstacle(file)) return false;
    takeOver(QSettings(QFile::decodeName(file.c_str()), QSettings::IniFormat));
    hasBeenRead = true;
    return true;
}

bool SettingsStorage::save() {
    if (!hasBeenRead) return false; // it may have more than is known here
    makeSettingsFile(file);
    const ActingAsOwner owner(file.parent_path());
    if (settingsObstacle(file)) return false;
    QSettings toolkit(QFile::decodeName(file.c_str()), QSettings::IniFormat);
    // A removed key comes before those below it, which it takes along.
    for (const auto& [key, value] : changes)
        if (value)
            toolkit.setValue(key, *value);
        else
            toolkit.remove(key);
    toolkit.sync();
    // A line that is no setting makes QSettings speak of an error and of no other: then it has to
    // do that the file may be written.
    const bool isSaved = toolkit.status() == QSettings::FormatError
                             ? toolkit.isWritable()
                             : toolkit.status() == QSettings::NoError;
    if (!isSaved) return false;
    changes.clear();
    takeOver(toolkit);
    return true;
}

} // namespace tokwatch
