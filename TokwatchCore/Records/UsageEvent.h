#pragma once

#include "TokwatchCore/Records/ProviderID.h"
#include "TokwatchCore/Records/TokenCounts.h"
#include "TokwatchCore/Support/Date.h"
#include "TokwatchCore/Support/SharedText.h"

#include <optional>
#include <string>
#include <string_view>

namespace tokwatch {

/// One countable request, as read from an assistant's log.
struct UsageEvent {
    ProviderID provider = ProviderID::claude;
    SharedText model;     ///< as the log names it; the price table matches on it
    SharedText sessionID; ///< the tool's conversation; empty when the log names none
    std::string dedupKey; ///< a second sighting of the same key is not counted
    Date timestamp;
    TokenCounts tokens;
    std::optional<double> reportedCostUSD; ///< US dollars, where the log itself states a cost

    friend bool operator==(const UsageEvent&, const UsageEvent&) = default;
};

/// "codex, gpt-5, 2026-03-10": whose usage it is, for messages. `when`: its day or its moment.
inline std::string usageOrigin(ProviderID provider, std::string_view model, std::string_view when) {
    std::string text(rawValue(provider));
    text.append(", ").append(model).append(", ").append(when);
    return text;
}

} // namespace tokwatch
