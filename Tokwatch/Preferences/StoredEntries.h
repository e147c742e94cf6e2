#pragma once

#include "Tokwatch/Preferences/SettingText.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace tokwatch {

/// What a settings file has of one setting: under "" the value that stands under its name, else the
/// values of the group of its name, by their keys. A value is the items of a list: one for a text,
/// none for an empty list.
using StoredEntries = std::map<std::string, std::vector<std::string>>;

/// As it is shown to people: "grok, codex", "claude=session".
std::string textOf(const StoredEntries& entries);

// How each type of setting stands in the settings file. What is not of the type is left out, which
// the answer false tells; `value` stays where nothing remains, as it does where nothing is stored.

/// One text, as on the command line.
template<typename Value>
bool takeStored(const StoredEntries& entries, Value& value) {
    if (entries.empty()) return true;
    const auto& [key, items] = *entries.begin();
    Value parsed{};
    if (!key.empty() || items.size() != 1 || !parseText(items.front(), parsed)) return false;
    value = std::move(parsed);
    return entries.size() == 1;
}
/// Any number: one that is out of bounds is brought within them where it is used.
bool takeStored(const StoredEntries& entries, double& value);
/// Items that are no providers, and repetitions, are left out.
bool takeStored(const StoredEntries& entries, ProviderList& value);
bool takeStored(const StoredEntries& entries, ProviderSet& value);
/// A group with one text for each provider.
bool takeStored(const StoredEntries& entries, WindowChoices& value);

} // namespace tokwatch
