#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace tokwatch {

/// A supported assistant. The declaration order is the default order wherever all are listed.
enum class ProviderID { claude, codex, grok, cursor };

/// All values of an enumeration in the order of their declaration.
template<typename Enumeration>
inline constexpr std::nullptr_t allCases = nullptr;
template<>
inline constexpr std::array<ProviderID, 4> allCases<ProviderID>{
    ProviderID::claude, ProviderID::codex, ProviderID::grok, ProviderID::cursor};

/// "claude": as stored, encoded and typed on the command line.
constexpr std::string_view rawValue(ProviderID provider) {
    constexpr std::array<std::string_view, 4> names{"claude", "codex", "grok", "cursor"};
    return names[static_cast<std::size_t>(provider)];
}

/// "Claude": as shown to people.
constexpr std::string_view displayName(ProviderID provider) {
    constexpr std::array<std::string_view, 4> names{"Claude", "Codex", "Grok", "Cursor"};
    return names[static_cast<std::size_t>(provider)];
}

/// The provider with exactly this raw value (case-sensitive), or none.
std::optional<ProviderID> providerFromRawValue(std::string_view raw);

} // namespace tokwatch
