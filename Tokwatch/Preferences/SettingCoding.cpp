#include "Tokwatch/Preferences/SettingCoding.h"

#include "Tokwatch/Preferences/SettingsFile.h"

#include <QFile>
#include <QSettings>
#include <QStringList>

#include <utility>
#include <vector>

namespace tokwatch {
namespace {

QString text(std::string_view utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

std::vector<std::string> itemsOf(const QVariant& stored) {
    // A list in which a text begins with "@" is one of other values.
    const bool isList =
        stored.typeId() == QMetaType::QStringList || stored.typeId() == QMetaType::QVariantList;
    if (stored.isValid() && !isList) return {stored.toString().toStdString()};
    std::vector<std::string> items;
    for (const QVariant& item : stored.toList())
        items.push_back(item.toString().toStdString());
    return items;
}

void storeProviders(QSettings& settings, const char* key, const auto& providers) {
    QStringList names;
    for (const ProviderID provider : providers)
        names.push_back(text(rawValue(provider)));
    settings.setValue(key, names);
}

} // namespace

std::filesystem::path fileOf(const QSettings& settings) {
    return QFile::encodeName(settings.fileName()).toStdString();
}

bool storageIsSound(const QSettings& settings) {
    return !settingsObstacle(fileOf(settings));
}

bool prepareStorage(const QSettings& settings) {
    makeSettingsFile(fileOf(settings));
    return storageIsSound(settings);
}

std::optional<std::string> storedText(const QSettings& settings, const char* key) {
    std::vector<std::string> items = itemsOf(settings.value(key));
    return items.size() == 1 ? std::optional(std::move(items.front())) : std::nullopt;
}

void storeText(QSettings& settings, const char* key, std::string_view value) {
    settings.setValue(key, text(value));
}

std::optional<Date> storedDate(const QSettings& settings, const char* key) {
    Date date;
    const auto stored = storedText(settings, key);
    return stored && parseText(*stored, date) ? std::optional(date) : std::nullopt;
}

StoredEntries entriesOf(const QSettings& settings, const char* name) {
    StoredEntries entries;
    if (settings.contains(name)) entries.emplace("", itemsOf(settings.value(name)));
    // Asked for the keys of the group alone, the toolkit leaves out those of groups within it as
    // long as nobody asked for all.
    const QString prefix = QString::fromLatin1(name) + u'/';
    for (const QString& key : settings.allKeys())
        if (key.startsWith(prefix) && key.size() > prefix.size())
            entries.emplace(key.sliced(prefix.size()).toStdString(), itemsOf(settings.value(key)));
    return entries;
}

void storeSetting(QSettings& settings, const char* key, bool value) {
    settings.setValue(key, value);
}

void storeSetting(QSettings& settings, const char* key, double value) {
    settings.setValue(key, value);
}

void storeSetting(QSettings& settings, const char* key, const ProviderList& value) {
    storeProviders(settings, key, value);
}

void storeSetting(QSettings& settings, const char* key, const ProviderSet& value) {
    storeProviders(settings, key, value);
}

void storeSetting(QSettings& settings, const char* key, const WindowChoices& value) {
    settings.remove(key);
    settings.beginGroup(key);
    for (const auto& [provider, window] : value)
        settings.setValue(text(provider), text(window));
    settings.endGroup();
}

} // namespace tokwatch
