#pragma once

#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Support/Date.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tokwatch {

/// What Claude Code tells the command of its status line about a session. Each field may be missing
/// or hold something else than it should, and is absent then.
struct SessionStatus {
    std::string model;                 ///< as shown; empty when it is not told
    std::optional<double> contextUsed; ///< 0…1
    std::optional<double> costUSD;     ///< of the session, by the assistant's own account
    /// Session and week, as far as told; local ones, as of `asOf`.
    std::vector<LimitWindow> limits;
    /// When the numbers held at the latest. The assistant has the limits from the answer to its
    /// last request, and shows them for as long as the session stays open: another session that was
    /// used since knows better. That answer was the last thing written into the transcript.
    Date asOf;

    /// Absent where the text is no JSON object.
    static std::optional<SessionStatus> decode(std::string_view text, Date now);
};

} // namespace tokwatch
