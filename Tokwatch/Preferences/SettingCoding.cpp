#include "Tokwatch/Preferences/SettingCoding.h"

#include "Tokwatch/Preferences/SettingsFile.h"

#include <QFile>
#include <QSettings>
#include <QStringList>

#include <algorithm>
#include <ranges>

namespace tokwatch {
namespace {

QString text(std::string_view utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

/// The providers named in a list; a list of one reads back as plain text.
std::optional<ProviderList> storedProviders(const QSettings& settings, const char* key) {
    if (!settings.contains(key)) return std::nullopt;
    ProviderList providers;
    for (const QString& name : settings.value(key).toStringList()) {
        const auto provider = providerFromRawValue(name.trimmed().toStdString());
        if (provider && std::ranges::count(providers, *provider) == 0)
            providers.push_back(*provider);
    }
    return providers;
}

void storeProviders(QSettings& settings, const char* key, const auto& providers) {
    QStringList names;
    for (const ProviderID provider : providers)
        names.push_back(text(rawValue(provider)));
    settings.setValue(key, names);
}

} // namespace

bool storageIsSound(const QSettings& settings) {
    return !settingsObstacle(QFile::encodeName(settings.fileName()).toStdString());
}

std::optional<std::string> storedText(const QSettings& settings, const char* key) {
    const QVariant stored = settings.value(key);
    // A list in which a text begins with "@" is one of other values.
    const bool isList =
        stored.typeId() == QMetaType::QStringList || stored.typeId() == QMetaType::QVariantList;
    if (!stored.isValid() || isList) return std::nullopt;
    return stored.toString().toStdString();
}

void storeText(QSettings& settings, const char* key, std::string_view value) {
    settings.setValue(key, text(value));
}

void loadSetting(const QSettings& settings, const char* key, bool& value) {
    if (const auto stored = storedText(settings, key)) parseText(*stored, value);
}

void loadSetting(const QSettings& settings, const char* key, double& value) {
    bool isNumber = false;
    const double stored = settings.value(key).toDouble(&isNumber);
    if (isNumber) value = stored;
}

void loadSetting(const QSettings& settings, const char* key, ProviderList& value) {
    if (auto stored = storedProviders(settings, key)) value = std::move(*stored);
}

void loadSetting(const QSettings& settings, const char* key, ProviderSet& value) {
    if (const auto stored = storedProviders(settings, key))
        value = ProviderSet(stored->begin(), stored->end());
}

void loadSetting(QSettings& settings, const char* key, WindowChoices& value) {
    settings.beginGroup(key);
    const QStringList names = settings.childKeys();
    if (!names.isEmpty()) value.clear();
    for (const QString& name : names)
        if (const auto window = storedText(settings, name.toUtf8().constData()))
            value[name.toStdString()] = *window;
    settings.endGroup();
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
