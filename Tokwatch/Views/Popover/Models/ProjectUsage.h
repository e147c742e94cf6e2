#pragma once

#include "Tokwatch/Display/SummaryDisplay.h"
#include "Tokwatch/Report/ResponseFiles.h"
#include "Tokwatch/Report/UsageReport.h"
#include "TokwatchCore/Support/Calendar.h"

#include <cstdint>
#include <stop_token>
#include <string>
#include <vector>

namespace tokwatch {

/// What the projects used in the last so many days, as the assistants' files say.
struct ProjectUsage {
    struct Row {
        std::string path; ///< below the home directory with "~"; empty where no log states one
        std::int64_t sessions = 0;
        SummaryDisplay::Use use;
        friend bool operator==(const Row&, const Row&) = default;
    };
    std::int64_t days = 0;
    std::int64_t tokens = 0; ///< of all
    std::vector<Row> rows;   ///< the costliest first, those without a price last
    bool hasUnknownPrices = false;
    bool hasApproximateCosts = false;
    std::int64_t unread = 0; ///< files and folders that could not be read
    friend bool operator==(const ProjectUsage&, const ProjectUsage&) = default;

    /// What a reading is asked for.
    struct Query {
        int days = 0;
        std::string home;
        Calendar calendar;
        Date now;
    };
    /// None where it was stopped. For a thread that may take its time.
    static std::optional<ProjectUsage> read(ResponseFiles& files, const Query& query,
                                            const PriceTable& prices,
                                            const ResponseFiles::Progress& progress,
                                            const std::stop_token& stop);
};

} // namespace tokwatch
