#pragma once

#include "TokwatchCore/Records/ProviderID.h"

#include <array>
#include <string_view>

namespace tokwatch {

/// What people are told about a provider's sources.
struct ProviderTexts {
    std::string_view reads;     ///< what is read on this machine: "Reads: ~/.grok/sessions"
    std::string_view note;      ///< empty where there is nothing to say
    std::string_view usagePage; ///< the assistant's own page for its user
};

constexpr ProviderTexts providerTexts(ProviderID provider) {
    constexpr std::array<ProviderTexts, 4> texts{{
        {"Reads: ~/.claude/projects, and the login that Claude Code stored", "",
         "https://claude.ai/settings/usage"},
        {"Reads: ~/.codex/sessions, ~/.codex/archived_sessions, ~/.codex/auth.json", "",
         "https://chatgpt.com/codex/settings/usage"},
        {"Reads: ~/.grok/sessions", "", "https://grok.com"},
        {"Reads: ~/Library/Application Support/Cursor/User/globalStorage/state.vscdb "
         "(detection only)",
         "Live limits are not available in 1.0. Cursor shows no usage data yet, only that it is "
         "installed.",
         "https://cursor.com/dashboard"},
    }};
    return texts[static_cast<std::size_t>(provider)];
}

/// Whether anybody can know how much of the provider's limits is left.
constexpr bool publishesLimits(ProviderID provider) {
    return provider == ProviderID::claude || provider == ProviderID::codex;
}

} // namespace tokwatch
