#include "Tokwatch/Preferences/SettingCoding.h"

#include <QStringList>

#include <utility>
#include <vector>

namespace tokwatch {
namespace {

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

void storeProviders(SettingsStorage& settings, const char* key, const auto& providers) {
    QStringList names;
    for (const ProviderID provider : providers)
        names.push_back(QString::fromUtf8(rawValue(provider)));
    settings.setValue(key, names);
}

} // namespace

std::optional<std::string> storedText(const SettingsStorage& settings, const char* key) {
    std::vector<std::string> items = itemsOf(settings.value(key));
    return items.size() == 1 ? std::optional(std::move(items.front())) : std::nullopt;
}

void storeText(SettingsStorage& settings, const char* key, std::string_view value) {
    settings.setValue(key, QString::fromUtf8(value));
}

std::optional<Date> storedDate(const SettingsStorage& settings, const char* key) {
    Date date;
    const auto stored = storedText(settings, key);
    return stored && parseText(*stored, date) ? std::optional(date) : std::nullopt;
}

StoredEntries entriesOf(const SettingsStorage& settings, const char* name) {
    StoredEntries entries;
    if (settings.contains(name)) entries.emplace("", itemsOf(settings.value(name)));
    const QString prefix = QString::fromLatin1(name) + u'/';
    const SettingsStorage::Values& values = settings.values();
    for (auto at = values.lower_bound(prefix); at != values.end() && at->first.startsWith(prefix);
         ++at)
        if (at->first.size() > prefix.size())
            entries.emplace(at->first.sliced(prefix.size()).toStdString(), itemsOf(at->second));
    return entries;
}

void storeSetting(SettingsStorage& settings, const char* key, bool value) {
    settings.setValue(key, value);
}

void storeSetting(SettingsStorage& settings, const char* key, double value) {
    settings.setValue(key, value);
}

void storeSetting(SettingsStorage& settings, const char* key, const ProviderList& value) {
    storeProviders(settings, key, value);
}

void storeSetting(SettingsStorage& settings, const char* key, const ProviderSet& value) {
    storeProviders(settings, key, value);
}

void storeSetting(SettingsStorage& settings, const char* key, const WindowChoices& value) {
    settings.remove(key);
    for (const auto& [provider, window] : value)
        settings.setValue(QString::fromUtf8(key) + u'/' + QString::fromUtf8(provider),
                          QString::fromUtf8(window));
}

} // namespace tokwatch
