#include "Tokwatch/Preferences/PreferenceKeys.h"

#include "Tokwatch/Preferences/Preferences.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <vector>

namespace tokwatch {
namespace {

// Text of each type of value.

std::string textOf(bool value) {
    return value ? "true" : "false";
}

std::string textOf(double value) {
    std::array<char, 32> digits;
    return {digits.data(), std::to_chars(digits.data(), digits.end(), value).ptr};
}

template<NamedCase Case>
std::string textOf(Case value) {
    return std::string(caseName(value));
}

std::string joined(std::string list, std::string_view item) {
    if (!list.empty()) list += ',';
    return list.append(item);
}

template<typename Providers>
requires std::same_as<typename Providers::value_type, ProviderID> std::string
textOf(const Providers& providers) {
    std::string list;
    for (const ProviderID provider : providers)
        list = joined(std::move(list), rawValue(provider));
    return list;
}

std::string textOf(const WindowChoices& choices) {
    std::string list;
    for (const auto& [provider, window] : choices)
        list = joined(std::move(list), provider + '=' + window);
    return list;
}

// Values of text; none when the text is not of the type.

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
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

bool parse(std::string_view text, bool& value) {
    const auto parsed = boolFromText(text);
    if (parsed) value = *parsed;
    return parsed.has_value();
}

bool parse(std::string_view text, double& value) {
    const std::string_view number = trimmed(text);
    const auto [end, error] = std::from_chars(number.begin(), number.end(), value);
    return error == std::errc{} && end == number.end();
}

template<NamedCase Case>
bool parse(std::string_view text, Case& value) {
    const auto parsed = caseNamed<Case>(trimmed(text));
    if (parsed) value = *parsed;
    return parsed.has_value();
}

bool parse(std::string_view text, ProviderList& value) {
    for (const std::string_view item : items(text)) {
        ProviderID provider{};
        if (!parse(item, provider)) return false;
        if (std::ranges::count(value, provider) > 0) return false;
        value.push_back(provider);
    }
    return true;
}

bool parse(std::string_view text, ProviderSet& value) {
    ProviderList providers;
    if (!parse(text, providers)) return false;
    value.insert(providers.begin(), providers.end());
    return true;
}

bool parse(std::string_view text, WindowChoices& value) {
    for (const std::string_view item : items(text)) {
        const std::size_t equals = item.find('=');
        if (equals == std::string_view::npos || equals + 1 == item.size()) return false;
        ProviderID provider{};
        if (!parse(item.substr(0, equals), provider)) return false;
        const std::string_view window = trimmed(item.substr(equals + 1));
        if (!value.emplace(rawValue(provider), window).second) return false;
    }
    return true;
}

// The keys.

template<typename Value>
using Member = Setting<Value> Preferences::*;

template<typename Value>
PreferenceKey key(std::string_view name, Member<Value> setting, std::string_view values,
                  std::function<bool(const Preferences&, const Value&)> isAllowed = {}) {
    return {name, values,
            [setting](const Preferences& preferences) {
                return textOf((preferences.*setting).value());
            },
            [=](Preferences& preferences, std::string_view text) -> std::optional<std::string> {
                Value value{};
                if (!parse(text, value) || (isAllowed && !isAllowed(preferences, value)))
                    return std::string(name) + " is " + std::string(values) + ", not \"" +
                           std::string(text) + '"';
                preferences.*setting = std::move(value);
                return std::nullopt;
            }};
}

constexpr std::string_view boolValues = "true or false";
constexpr std::string_view someProviders =
    "a list of claude, codex, grok and cursor, each at most once";

/// Room for what decimal fractions lose: 0.25 − 0.05 is to allow 0.2.
constexpr double roundingError = 1e-9;

bool isWarningLevel(const Preferences&, double value) {
    return value >= Preferences::lowestWarning && value <= 1;
}

bool isCriticalLevel(const Preferences& preferences, double value) {
    const double highest = Preferences::highestCritical(preferences.warningThreshold.peek());
    return value >= Preferences::lowestCritical && value <= highest + roundingError;
}

const std::array<PreferenceKey, 14>& allKeys() {
    using P = Preferences;
    static const std::array<PreferenceKey, 14> keys{
        key("showDockIcon", &P::showDockIcon, boolValues),
        key("hasCompletedOnboarding", &P::hasCompletedOnboarding, boolValues),
        key("menuBarStyle", &P::menuBarStyle, "icon or provider"),
        key("pinnedProvider", &P::pinnedProvider, "claude, codex, grok or cursor"),
        key("showResetTime", &P::showResetTime, boolValues),
        key("menuBarWindows", &P::menuBarWindows, "a list such as claude=session,codex=weekly"),
        key<double>("warningThreshold", &P::warningThreshold, "a number from 0.1 to 1",
                    isWarningLevel),
        key<double>("criticalThreshold", &P::criticalThreshold,
                    "a number from 0.05 to warningThreshold - 0.05", isCriticalLevel),
        key("tintEnabled", &P::tintEnabled, boolValues),
        key("providerOrder", &P::providerOrder, someProviders),
        key("disabledProviders", &P::disabledProviders, someProviders),
        key("claudeLiveLimits", &P::claudeLiveLimits, boolValues),
        key("summaryUnit", &P::summaryUnit, "cost or tokens"),
        key("popoverTab", &P::popoverTab, "usage, stats or models")};
    return keys;
}

} // namespace

std::span<const PreferenceKey> preferenceKeys() {
    return allKeys();
}

const PreferenceKey* preferenceKey(std::string_view name) {
    const auto found = std::ranges::find(allKeys(), name, &PreferenceKey::name);
    return found == allKeys().end() ? nullptr : &*found;
}

} // namespace tokwatch
