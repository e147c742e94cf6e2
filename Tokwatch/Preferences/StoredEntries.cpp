#include "Tokwatch/Preferences/StoredEntries.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>
#include <system_error>

namespace tokwatch {

std::string textOf(const StoredEntries& entries) {
    std::string text;
    for (const auto& [key, items] : entries)
        for (const std::string& item : items)
            text.append(text.empty() ? "" : ", ").append(key.empty() ? item : key + '=' + item);
    return text;
}

bool takeStored(const StoredEntries& entries, double& value) {
    if (entries.empty()) return true;
    const auto& [key, items] = *entries.begin();
    if (!key.empty() || items.size() != 1) return false;
    std::string_view number = trimmed(items.front());
    if (number.starts_with('+') && !number.starts_with("+-")) number.remove_prefix(1);
    double parsed = 0;
    const auto [end, error] = std::from_chars(number.begin(), number.end(), parsed);
    if (error != std::errc{} || end != number.end() || !std::isfinite(parsed)) return false;
    value = parsed;
    return entries.size() == 1;
}

bool takeStored(const StoredEntries& entries, ProviderList& value) {
    const auto own = entries.find("");
    if (own == entries.end()) return entries.empty();
    bool isWhole = entries.size() == 1;
    value.clear();
    for (const std::string& item : own->second) {
        const auto provider = providerFromRawValue(trimmed(item));
        if (provider && std::ranges::count(value, *provider) == 0)
            value.push_back(*provider);
        else
            isWhole = isWhole && own->second.size() == 1 && item.empty();
    }
    return isWhole;
}

bool takeStored(const StoredEntries& entries, ProviderSet& value) {
    ProviderList providers(value.begin(), value.end());
    const bool isWhole = takeStored(entries, providers);
    value = ProviderSet(providers.begin(), providers.end());
    return isWhole;
}

bool takeStored(const StoredEntries& entries, WindowChoices& value) {
    WindowChoices choices;
    for (const auto& [key, items] : entries)
        if (providerFromRawValue(key) && items.size() == 1 && !items.front().empty())
            choices.emplace(key, items.front());
    const bool isWhole = choices.size() == entries.size();
    if (!choices.empty()) value = std::move(choices);
    return isWhole;
}

} // namespace tokwatch
