#include "Tokwatch/CommandLine/Suggestion.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace tokwatch {
namespace {

/// How many letters to change, add or leave out (Levenshtein).
std::size_t distance(std::string_view one, std::string_view other) {
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), 0U);
    for (std::size_t i = 0; i < one.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < other.size(); ++j) {
            const std::size_t changed = diagonal + (one[i] == other[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

} // namespace

std::string suggestion(std::string_view word, const std::vector<std::string>& names) {
    const auto begins = [word](const std::string& name) {
        return word.size() >= 3 && name.starts_with(word);
    };
    const auto far = [word](const std::string& name) { return distance(word, name); };
    auto near = std::ranges::find_if(names, begins);
    if (near == names.end()) near = std::ranges::min_element(names, {}, far);
    constexpr std::size_t slips = 2;
    if (near == names.end() || word.size() <= slips) return {};
    if (!begins(*near) && far(*near) > slips) return {};
    return "; did you mean \"" + *near + "\"?";
}

} // namespace tokwatch
