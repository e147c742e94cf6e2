#include "Tokwatch/Preferences/StoredSettings.h"

#include "Tokwatch/Preferences/SettingText.h"

#include <algorithm>
#include <utility>

namespace tokwatch {
namespace {

/// What stands for the letter after a backslash.
char escaped(char letter) {
    switch (letter) {
    case 'n':
        return '\n';
    case 'r':
        return '\r';
    case 't':
        return '\t';
    default:
        return letter;
    }
}

/// The items between the commas; between quotation marks a comma is a letter like others.
std::vector<std::string> itemsOf(std::string_view value) {
    std::vector<std::string> items(1);
    bool isQuoted = false;
    std::size_t kept = 0; // letters of the last item that are no blanks, or quoted
    for (std::size_t at = 0; at < value.size(); ++at) {
        char letter = value[at];
        if (letter == '"') {
            isQuoted = !isQuoted;
            kept = items.back().size();
            continue;
        }
        if (letter == ',' && !isQuoted) {
            items.back().resize(kept);
            items.emplace_back();
            kept = 0;
            continue;
        }
        const bool isBlank = (letter == ' ' || letter == '\t') && !isQuoted;
        if (letter == '\\' && at + 1 < value.size()) letter = escaped(value[++at]);
        if (isBlank && items.back().empty()) continue;
        items.back() += letter;
        if (!isBlank) kept = items.back().size();
    }
    items.back().resize(kept);
    return items;
}

/// Both ways to write a group lead to one name.
std::string withSlashes(std::string_view key) {
    std::string name(key);
    std::ranges::replace(name, '\\', '/');
    return name;
}

/// "[group]" as it stands before each of its keys.
std::string prefixOf(std::string_view line) {
    const std::string_view name = trimmed(line.substr(1, line.find(']') - 1));
    return lowered(name) == "general" ? "" : withSlashes(name) + '/';
}

} // namespace

StoredSettings::StoredSettings(std::string_view text) {
    std::string prefix;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
        const std::string_view line = trimmed(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        const std::size_t equals = line.find('=');
        if (line.starts_with('['))
            prefix = prefixOf(line);
        else if (equals != std::string_view::npos && !line.starts_with(';'))
            values[prefix + withSlashes(trimmed(line.substr(0, equals)))] =
                itemsOf(line.substr(equals + 1));
    }
}

std::optional<std::string> StoredSettings::text(const std::string& key) const {
    std::vector<std::string> items = list(key);
    return items.size() == 1 ? std::optional(std::move(items.front())) : std::nullopt;
}

std::vector<std::string> StoredSettings::list(const std::string& key) const {
    const auto found = values.find(key);
    return found == values.end() ? std::vector<std::string>() : found->second;
}

std::map<std::string, std::string> StoredSettings::group(const std::string& name) const {
    std::map<std::string, std::string> texts;
    const std::string prefix = name + '/';
    for (auto at = values.lower_bound(prefix); at != values.end() && at->first.starts_with(prefix);
         ++at)
        if (at->second.size() == 1)
            texts.emplace(at->first.substr(prefix.size()), at->second.front());
    return texts;
}

} // namespace tokwatch
