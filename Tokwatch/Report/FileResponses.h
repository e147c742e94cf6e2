#pragma once

#include "TokwatchCore/Ingestion/LineVerdict.h"
#include "TokwatchCore/Ingestion/LogFiles.h"
#include "TokwatchCore/Records/ProviderID.h"
#include "TokwatchCore/Records/TokenCounts.h"
#include "TokwatchCore/Support/Date.h"

#include <array>
#include <cstdint>
#include <numeric>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tokwatch {

/// A response as the last line about it tells of it. Texts stand once a file, so that a million
/// responses fit into a hundred megabytes.
struct Response {
    std::uint64_t key = 0; ///< `responseKey` of what tells it from all others
    Date timestamp;
    TokenCounts tokens;
    std::optional<double> reportedUSD;
    std::uint32_t session = 0; ///< of the file's
    std::uint32_t model = 0;   ///< of the file's
    bool isUnfinished = false; ///< the line says that more may follow
};

/// Of a million keys any two are the same with a chance of one to thirty million.
std::uint64_t responseKey(std::string_view dedupKey);

/// What came of the lines of one log, or of several.
struct LineTally {
    std::array<std::int64_t, allCases<LineVerdict>.size()> counts{};
    std::int64_t unended = 0; ///< files that end within a line, which is not read yet

    std::int64_t of(LineVerdict verdict) const { return counts[static_cast<std::size_t>(verdict)]; }
    void add(LineVerdict verdict, std::int64_t lines = 1) {
        counts[static_cast<std::size_t>(verdict)] += lines;
    }
    /// Of a log in the form of older Codex, which tells running totals alone.
    bool hasCumulativeOnly() const {
        return of(LineVerdict::cumulative) > 0 && of(LineVerdict::counted) == 0;
    }
    std::int64_t total() const { return std::accumulate(counts.begin(), counts.end(), 0LL); }
    LineTally& operator+=(const LineTally& added) {
        for (const LineVerdict verdict : allCases<LineVerdict>)
            add(verdict, added.of(verdict));
        unended += added.unended;
        return *this;
    }
};

/// Whether also those lines of a response are kept that later ones replace.
enum class KeepLines { last, all };

/// What one log file says was used.
struct FileResponses {
    struct Session {
        std::string id;
        /// Where it began to work: of the first of its responses that says so; else empty.
        std::string directory;
        Date statedAt; ///< by that response
    };
    ProviderID provider = ProviderID::claude;
    std::string root; ///< of the provider's logs, below which the file is
    LogFile file;     ///< as it was listed
    /// Where the last line ends that was read, in bytes: what was written since the listing counts.
    std::int64_t readTo = 0;
    LineTally lines;
    std::vector<std::string> models;
    std::vector<Session> sessions;
    std::vector<Response> responses; ///< each key once, in the order of their first lines
    /// Where all lines are kept, those with other counts than the line that replaced them.
    std::vector<Response> replaced;
};

} // namespace tokwatch
