#pragma once

namespace tokwatch {

/// The only servers that are ever contacted, each with its own provider's login and no other.
inline constexpr const char* claudeServer = "api.anthropic.com";
inline constexpr const char* codexServer = "chatgpt.com";

} // namespace tokwatch
