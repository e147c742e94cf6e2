#include "Tokwatch/Preferences/SettingCoding.h"

#include "Tokwatch/Preferences/SettingsFile.h"

#include <QFile>
#include <QSettings>
#include <QStringList>

#include <algorithm>
#include <charconv>
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

std::string joined(std::string list, std::string_view item) {
    if (!list.empty()) list += ',';
    return list.append(item);
}

std::string listOf(const auto& providers) {
    std::string list;
    for (const ProviderID provider : providers)
        list = joined(std::move(list), rawValue(provider));
    return list;
}

/// The items between the commas; none at all for an empty text.
std::vector<std::string_view> items(std::string_view list) {
    std::vector<std::string_view> found;
    if (trimmed(list).empty()) return found;
    for (;;) {
        const std::size_t comma = list.find(',');
        found.push_back(trimmed(list.substr(0, comma)));
        if (comma == std::string_view::npos) return found;
        list.remove_prefix(comma + 1);
    }
}

} // namespace

bool storageIsSound(const QSettings& settings) {
    return !settingsObstacle(QFile::encodeName(settings.fileName()).toStdString());
}

std::optional<std::string> storedText(const QSettings& settings, const char* key) {
    const QVariant stored = settings.value(key);
    if (!stored.isValid() || stored.typeId() == QMetaType::QStringList) return std::nullopt;
    return stored.toString().toStdString();
}

void storeText(QSettings& settings, const char* key, std::string_view value) {
    settings.setValue(key, text(value));
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string enumerated(std::span<const std::string_view> words, std::string_view last) {
    std::string list(words.front());
    for (std::size_t index = 1; index < words.size(); ++index) {
        if (index + 1 < words.size())
            list.append(", ");
        else
            list.append(" ").append(last).append(" ");
        list.append(words[index]);
    }
    return list;
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

std::string textOf(bool value) {
    return value ? "true" : "false";
}

std::string textOf(double value) {
    std::array<char, 32> digits;
    return {digits.data(), std::to_chars(digits.data(), digits.end(), value).ptr};
}

std::string textOf(const ProviderList& value) {
    return listOf(value);
}

std::string textOf(const ProviderSet& value) {
    return listOf(value);
}

std::string textOf(const WindowChoices& value) {
    std::string list;
    for (const auto& [provider, window] : value)
        list = joined(std::move(list), provider + '=' + window);
    return list;
}

bool parseText(std::string_view given, bool& value) {
    const QString word = text(given).trimmed().toLower();
    const bool isTrue = word == "true" || word == "1" || word == "yes";
    if (!isTrue && word != "false" && word != "0" && word != "no") return false;
    value = isTrue;
    return true;
}

bool parseText(std::string_view text, double& value) {
    const std::string_view number = trimmed(text);
    const auto [end, error] = std::from_chars(number.begin(), number.end(), value);
    return error == std::errc{} && end == number.end() && value >= 0 && value <= 1;
}

bool parseText(std::string_view text, ProviderList& value) {
    for (const std::string_view item : items(text)) {
        ProviderID provider{};
        if (!parseText(item, provider) || std::ranges::count(value, provider) > 0) return false;
        value.push_back(provider);
    }
    return true;
}

bool parseText(std::string_view text, ProviderSet& value) {
    ProviderList providers;
    if (!parseText(text, providers)) return false;
    value.insert(providers.begin(), providers.end());
    return true;
}

bool parseText(std::string_view text, WindowChoices& value) {
    for (const std::string_view item : items(text)) {
        const std::size_t equals = item.find('=');
        if (equals == std::string_view::npos || equals + 1 == item.size()) return false;
        ProviderID provider{};
        if (!parseText(item.substr(0, equals), provider)) return false;
        const std::string_view window = trimmed(item.substr(equals + 1));
        if (!value.emplace(rawValue(provider), window).second) return false;
    }
    return true;
}

SettingDomain domainOf(bool) {
    static constexpr std::array<std::string_view, 2> words{"true", "false"};
    return {enumerated(words, "or"), words};
}

SettingDomain domainOf(double) {
    return {"a number from 0 to 1", {}};
}

SettingDomain domainOf(const ProviderList&) {
    constexpr const auto& words = caseNames<ProviderID>;
    return {"a list of " + enumerated(words, "and") + ", each at most once", words, true};
}

SettingDomain domainOf(const ProviderSet&) {
    return domainOf(ProviderList());
}

SettingDomain domainOf(const WindowChoices&) {
    return {"a list such as claude=session,codex=weekly", {}};
}

} // namespace tokwatch
