#include "Tokwatch/Preferences/SettingText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

namespace tokwatch {
namespace {

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

bool parseNumber(std::string_view number, double& value) {
    const auto [end, error] = std::from_chars(number.begin(), number.end(), value);
    return error == std::errc{} && end == number.end();
}

} // namespace

std::string lowered(std::string_view text) {
    std::string lower(text);
    for (char& letter : lower)
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
    return lower;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\n\v\f\r";
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
    const std::string word = lowered(trimmed(given));
    const bool isTrue = word == "true" || word == "1" || word == "yes";
    if (!isTrue && word != "false" && word != "0" && word != "no") return false;
    value = isTrue;
    return true;
}

bool parseText(std::string_view text, double& value) {
    return parseNumber(trimmed(text), value) && value >= 0 && value <= 1;
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

bool parseText(std::string_view text, std::string& value) {
    value = text;
    return true;
}

bool parseText(std::string_view text, Date& value) {
    double seconds = 0;
    if (!parseNumber(text, seconds) || !std::isfinite(seconds)) return false;
    value = dateFromUnixSeconds(seconds);
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
