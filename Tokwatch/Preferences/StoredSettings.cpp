#include "Tokwatch/Preferences/StoredSettings.h"

#include "Tokwatch/Preferences/SettingText.h"
#include "TokwatchCore/Support/Letters.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <system_error>
#include <utility>

namespace tokwatch {
namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

/// A line up to where it ends, and where its first "=" is. It ends at a line feed, or where a
/// comment begins, that no quotation mark and no backslash keeps from it.
struct Line {
    std::string_view text;
    std::size_t equals = std::string_view::npos;
};

/// Whether both letters of a line's end are there, in either order.
bool isLineEnd(std::string_view text) {
    return text.starts_with("\r\n") || text.starts_with("\n\r");
}

Line takeLine(std::string_view& rest) {
    Line line;
    bool isQuoted = false;
    std::size_t at = 0;
    for (; at < rest.size(); ++at) {
        const char letter = rest[at];
        if (letter == '"') isQuoted = !isQuoted;
        if (letter == '\\') at += isLineEnd(rest.substr(at + 1)) ? 2 : 1;
        if (isQuoted) continue;
        if (letter == '\n' || letter == '\r' || (letter == ';' && at > 0)) break;
        if (letter == '=' && line.equals == std::string_view::npos) line.equals = at;
        if (letter == ';') { // a line of its own, quotation marks and all
            at = std::min(rest.find_first_of("\r\n"), rest.size());
            break;
        }
    }
    const std::size_t end = std::min(at, rest.size());
    line.text = rest.substr(0, end);
    const bool isAtComment = end < rest.size() && rest[end] == ';';
    rest.remove_prefix(std::min(end + (isAtComment ? 0 : 1), rest.size()));
    return line;
}

/// The value of a digit; none where it is none of the base.
std::optional<unsigned> digitOf(char letter, int base) {
    unsigned digit = 0;
    const auto [end, error] = std::from_chars(&letter, &letter + 1, digit, base);
    return error == std::errc{} ? std::optional(digit) : std::nullopt;
}

/// The number that the digits at the front are, as many as there are, which are then gone. Its
/// letter is that of the last 16 bits.
std::optional<unsigned> takeNumber(std::string_view& digits, int base) {
    std::optional<unsigned> number;
    while (!digits.empty()) {
        const std::optional<unsigned> digit = digitOf(digits.front(), base);
        if (!digit) break;
        number = (number.value_or(0) * static_cast<unsigned>(base) + *digit) & 0xFFFF;
        digits.remove_prefix(1);
    }
    return number;
}

/// What stands for the letters after a backslash, which are then gone: nothing for an end of a
/// line. Numbers are those of letters.
std::string takeEscaped(std::string_view& rest) {
    constexpr std::array<std::pair<char, char>, 11> names{{{'a', '\a'},
                                                           {'b', '\b'},
                                                           {'f', '\f'},
                                                           {'n', '\n'},
                                                           {'r', '\r'},
                                                           {'t', '\t'},
                                                           {'v', '\v'},
                                                           {'"', '"'},
                                                           {'?', '?'},
                                                           {'\'', '\''},
                                                           {'\\', '\\'}}};
    if (rest.empty()) return {};
    const char letter = rest.front();
    const auto numbered = [&rest](int base) {
        const std::optional<unsigned> number = takeNumber(rest, base);
        return number ? utf8Of(std::wstring(1, static_cast<wchar_t>(*number))) : "";
    };
    if (letter >= '0' && letter <= '7') return numbered(8);
    rest.remove_prefix(isLineEnd(rest) ? 2 : 1);
    if (letter == 'x') return numbered(16);
    const auto* const found = std::ranges::find(names, letter, &std::pair<char, char>::first);
    return found == names.end() ? std::string() : std::string(1, found->second);
}

/// Texts that QSettings would take for something else are marked, and some types have their name
/// around them.
std::string plainItem(std::string item) {
    for (const std::string_view name : {"@String(", "@ByteArray("})
        if (item.starts_with(name) && item.ends_with(')'))
            return item.substr(name.size(), item.size() - name.size() - 1);
    if (item.starts_with("@@")) item.erase(0, 1);
    return item;
}

bool isBlank(char letter) {
    return letter == ' ' || letter == '\t';
}

/// One item while it is read.
struct Item {
    std::string text;
    std::size_t kept = 0;  ///< letters that stay, blanks or not
    bool isQuoted = false; ///< some of it; then its blanks stay

    void chop() {
        while (!isQuoted && text.size() > kept && isBlank(text.back()))
            text.pop_back();
    }
};

/// The items between the commas; between quotation marks a comma is a letter like others.
std::vector<std::string> itemsOf(std::string_view value) {
    std::vector<std::string> items;
    Item item;
    bool isWithin = false; // quotation marks
    bool isBefore = true;  // the letters after a comma or a quotation, blanks left out
    while (!value.empty()) {
        const char letter = value.front();
        value.remove_prefix(1);
        if (isBefore && isBlank(letter)) continue;
        isBefore = false;
        if (letter == '"') {
            item.isQuoted = true;
            isWithin = !isWithin;
            isBefore = !isWithin;
            if (isBefore) item.kept = item.text.size();
        } else if (letter == ',' && !isWithin) {
            item.chop();
            items.push_back(std::exchange(item, {}).text);
            isBefore = true;
        } else if (letter == '\\') {
            if (value.empty()) item.kept = item.text.size();
            if (const std::string escaped = takeEscaped(value); !escaped.empty())
                item.kept = item.text.append(escaped).size();
        } else {
            item.text += letter;
        }
    }
    item.chop();
    items.push_back(std::move(item.text));
    if (items.size() == 1 && items.front() == "@Invalid()") return {};
    std::ranges::transform(items, items.begin(), plainItem);
    return items;
}

/// A key without its "%41", and with slashes: both ways to write a group lead to one name.
std::string keyOf(std::string_view text) {
    std::string key;
    while (!text.empty()) {
        const char letter = text.front();
        text.remove_prefix(1);
        std::string_view digits = text.substr(0, 2);
        if (const auto number =
                letter == '%' && digits.size() == 2 ? takeNumber(digits, 16) : std::nullopt;
            number && digits.empty()) {
            key += static_cast<char>(*number);
            text.remove_prefix(2);
        } else {
            key += letter == '\\' ? '/' : letter;
        }
    }
    return key;
}

/// "[group]" as it stands before each of its keys.
std::string prefixOf(std::string_view line) {
    const std::string_view name = trimmed(line.substr(1, line.find(']') - 1));
    return lowered(name) == "general" ? "" : keyOf(name) + '/';
}

} // namespace

StoredSettings::StoredSettings(std::string_view text) {
    if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
    std::string prefix;
    while (!text.empty()) {
        const std::size_t start = std::min(text.find_first_not_of(" \t\r\n"), text.size());
        text.remove_prefix(start);
        const auto [line, equals] = takeLine(text);
        if (line.starts_with('['))
            prefix = prefixOf(line);
        else if (equals != std::string_view::npos && !line.starts_with(';'))
            values[prefix + keyOf(trimmed(line.substr(0, equals)))] =
                itemsOf(line.substr(equals + 1));
    }
}

StoredEntries StoredSettings::entries(const std::string& name) const {
    StoredEntries found;
    if (const auto own = values.find(name); own != values.end()) found.emplace("", own->second);
    const std::string prefix = name + '/';
    for (auto at = values.lower_bound(prefix); at != values.end() && at->first.starts_with(prefix);
         ++at)
        if (at->first != prefix) found.emplace(at->first.substr(prefix.size()), at->second);
    return found;
}

std::set<std::string> StoredSettings::names() const {
    std::set<std::string> names;
    for (const auto& [key, items] : values)
        names.insert(key.substr(0, key.find('/')));
    return names;
}

} // namespace tokwatch
