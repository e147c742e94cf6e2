#pragma once

#include "Tokwatch/CommandLine/CommandEnvironment.h"
#include "Tokwatch/Preferences/PreferenceTypes.h"

#include <cstdint>
#include <optional>

namespace tokwatch {

enum class SummaryTable { tool, model, day };

struct SummaryOptions {
    std::int64_t days = 30;
    SummaryUnit unit = SummaryUnit::cost;
    std::optional<SummaryTable> by; ///< all three when absent
    bool skipIndex = false;
};

/// `tokwatch summary`
int runSummary(const CommandEnvironment& environment, const SummaryOptions& options);

} // namespace tokwatch
