#pragma once

#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Records/ProviderID.h"
#include "TokwatchCore/Support/Date.h"

#include <optional>

namespace tokwatch {

/// The switch for Claude's live limits. While it is off, what is known of Claude is shown as stale
/// and unavailable; what is stored stays as it is, so that every process has it again at once when
/// the switch comes on.
namespace ClaudeGate {

/// `isOpen` is what the switch says.
bool isClosed(ProviderID provider, bool isOpen);

/// What is shown of Claude while it is closed.
ProviderLimits shown(const std::optional<ProviderLimits>& known, Date now);

/// Stored limits as they are to be shown.
LimitsByProvider applied(LimitsByProvider stored, bool isOpen, Date now);

} // namespace ClaudeGate
} // namespace tokwatch
