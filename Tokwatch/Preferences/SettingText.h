#pragma once

#include "Tokwatch/Preferences/PreferenceTypes.h"
#include "TokwatchCore/Records/ProviderID.h"
#include "TokwatchCore/Support/Date.h"

#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tokwatch {

using ProviderList = std::vector<ProviderID>;
using ProviderSet = std::set<ProviderID>;
using WindowChoices = std::map<std::string, std::string>;

std::string_view trimmed(std::string_view text);
/// With small letters, of those that have no accents.
std::string lowered(std::string_view text);
/// "a, b or c".
std::string enumerated(std::span<const std::string_view> words, std::string_view last);

// How each type of setting is written on a command line: lists as "claude,codex", pairs as
// "claude=session,codex=weekly".

std::string textOf(bool value);
std::string textOf(double value);
std::string textOf(const ProviderList& value);
std::string textOf(const ProviderSet& value);
std::string textOf(const WindowChoices& value);
template<NamedCase Case>
std::string textOf(Case value) {
    return std::string(rawValue(value));
}

// False where the text is not of the type; the value is of no use then.

/// "true" or "false", also "1", "0", "yes", "no", in any case.
bool parseText(std::string_view text, bool& value);
/// A fraction: 0 … 1.
bool parseText(std::string_view text, double& value);
/// No provider twice.
bool parseText(std::string_view text, ProviderList& value);
bool parseText(std::string_view text, ProviderSet& value);
bool parseText(std::string_view text, WindowChoices& value);
/// Seconds since 1970, of times that are kept with settings.
bool parseText(std::string_view text, Date& value);
/// Any.
bool parseText(std::string_view text, std::string& value);
template<NamedCase Case>
bool parseText(std::string_view text, Case& value) {
    const auto parsed = caseNamed<Case>(trimmed(text));
    if (parsed) value = *parsed;
    return parsed.has_value();
}

/// What a value may be, in words, and the words that a shell can offer for it.
struct SettingDomain {
    std::string values; ///< "true or false"
    std::span<const std::string_view> words;
    bool isList = false; ///< of words, with commas between
};

SettingDomain domainOf(bool);
SettingDomain domainOf(double);
SettingDomain domainOf(const ProviderList&);
SettingDomain domainOf(const ProviderSet&);
SettingDomain domainOf(const WindowChoices&);
template<NamedCase Case>
SettingDomain domainOf(Case) {
    return {enumerated(caseNames<Case>, "or"), caseNames<Case>};
}

} // namespace tokwatch
