#pragma once

#include <array>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tokwatch {

class Preferences;

/// A setting as it is named, read and assigned in text, as on the command line.
struct PreferenceKey {
    std::string_view name;
    std::string_view values; ///< what it may be: "true or false"
    /// Lists as "claude,codex", pairs as "claude=session,codex=weekly".
    std::function<std::string(const Preferences&)> get;
    /// Answers why the text was refused: "warningThreshold is a number from 0.1 to 1, not \"x\"".
    std::function<std::optional<std::string>(Preferences&, std::string_view text)> set;
};

/// All settings, in their order.
std::span<const PreferenceKey> preferenceKeys();

/// None when there is no setting of this name.
const PreferenceKey* preferenceKey(std::string_view name);

} // namespace tokwatch
