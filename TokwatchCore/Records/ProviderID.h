#pragma once

#include "TokwatchCore/Support/NamedCases.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace tokwatch {

/// A supported assistant. The declaration order is the default order wherever all are listed.
enum class ProviderID { claude, codex, grok, cursor };

enum class LogFormat {
    none,
    claudeLines,  ///< "*.jsonl", which grow by whole lines
    codexLines,   ///< the same
    grokDocument, ///< "usage.json", replaced as a whole
};

/// What tells one assistant from another, and what people are told about it.
struct ProviderTraits {
    std::string_view rawValue;    ///< as stored, encoded and typed on the command line
    std::string_view displayName; ///< as shown to people
    std::string_view toolName;    ///< what its user signs in with
    LogFormat logFormat = LogFormat::none;
    /// Where its logs are below the home directory, in the order of reading; empty ones are none.
    std::array<std::string_view, 2> logRoots;
    const char* folderVariable = nullptr; ///< by which its user moves the folder above them
    bool publishesLimits = false; ///< whether anybody can know how much of its limits is left
    std::string_view reads;       ///< what is read on this machine: "Reads: ~/.grok/sessions"
    std::string_view note;        ///< empty where there is nothing to say
    std::string_view usagePage;   ///< the assistant's own page for its user
};

/// The table of providers; one without an entry does not compile. Empty beyond the last.
constexpr ProviderTraits tableEntry(ProviderID provider) {
    switch (provider) {
    case ProviderID::claude:
        return {"claude",
                "Claude",
                "Claude Code",
                LogFormat::claudeLines,
                {".claude/projects"},
                "CLAUDE_CONFIG_DIR",
                true,
                "Reads: ~/.claude/projects, and the login that Claude Code stored",
                "",
                "https://claude.ai/settings/usage"};
    case ProviderID::codex:
        return {"codex",
                "Codex",
                "Codex",
                LogFormat::codexLines,
                {".codex/sessions", ".codex/archived_sessions"},
                "CODEX_HOME",
                true,
                "Reads: ~/.codex/sessions, ~/.codex/archived_sessions, ~/.codex/auth.json",
                "",
                "https://chatgpt.com/codex/settings/usage"};
    case ProviderID::grok:
        return {"grok",
                "Grok",
                "Grok",
                LogFormat::grokDocument,
                {".grok/sessions"},
                "GROK_HOME",
                false,
                "Reads: ~/.grok/sessions",
                "",
                "https://grok.com"};
    case ProviderID::cursor:
        return {"cursor",
                "Cursor",
                "Cursor",
                LogFormat::none,
                {},
                nullptr,
                false,
                "Reads: ~/Library/Application Support/Cursor/User/globalStorage/state.vscdb "
                "(detection only)",
                "Live limits are not available in 1.0. Cursor shows no usage data yet, only that "
                "it is installed.",
                "https://cursor.com/dashboard"};
    }
    return {};
}

inline constexpr std::size_t providerCount = [] {
    std::size_t count = 0;
    while (!tableEntry(static_cast<ProviderID>(count)).rawValue.empty())
        ++count;
    return count;
}();

inline constexpr auto providerTable = [] {
    std::array<ProviderTraits, providerCount> table;
    for (std::size_t index = 0; index < table.size(); ++index)
        table[index] = tableEntry(static_cast<ProviderID>(index));
    return table;
}();

template<>
inline constexpr auto caseNames<ProviderID> = [] {
    std::array<std::string_view, providerCount> names;
    for (std::size_t index = 0; index < names.size(); ++index)
        names[index] = providerTable[index].rawValue;
    return names;
}();

constexpr const ProviderTraits& traits(ProviderID provider) {
    return providerTable[static_cast<std::size_t>(provider)];
}

/// "Claude": as shown to people.
constexpr std::string_view displayName(ProviderID provider) {
    return traits(provider).displayName;
}

/// The provider with exactly this raw value (case-sensitive), or none.
constexpr std::optional<ProviderID> providerFromRawValue(std::string_view raw) {
    return caseNamed<ProviderID>(raw);
}

} // namespace tokwatch
