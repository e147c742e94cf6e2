#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace tokwatch {

/// The names of an enumeration's cases in the order of their declaration, as they are stored,
/// encoded and typed. An enumeration that has them has all of the below.
template<typename Case>
inline constexpr std::array<std::string_view, 0> caseNames{};

template<typename Case>
concept NamedCase = caseNames<Case>
.size() > 0;

template<NamedCase Case>
constexpr std::string_view rawValue(Case value) {
    return caseNames<Case>[static_cast<std::size_t>(value)];
}

/// All values in the order of their declaration.
template<NamedCase Case>
inline constexpr auto allCases = [] {
    std::array<Case, caseNames<Case>.size()> cases{};
    for (std::size_t index = 0; index < cases.size(); ++index)
        cases[index] = static_cast<Case>(index);
    return cases;
}();

/// The case with exactly this name (case-sensitive), or none.
template<NamedCase Case>
constexpr std::optional<Case> caseNamed(std::string_view name) {
    for (const Case value : allCases<Case>)
        if (rawValue(value) == name) return value;
    return std::nullopt;
}

} // namespace tokwatch
