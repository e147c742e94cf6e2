#pragma once

namespace tokwatch {

/// The only hosts that are ever contacted, each with its own provider's login and no other.
inline constexpr const char* claudeHost = "api.anthropic.com";
inline constexpr const char* codexHost = "chatgpt.com";

} // namespace tokwatch
