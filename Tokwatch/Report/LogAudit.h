#pragma once

#include "Tokwatch/Report/ResponseFiles.h"
#include "TokwatchCore/Store/StoredAccounts.h"
#include "TokwatchCore/Support/Calendar.h"
#include "TokwatchCore/Support/NamedCases.h"

#include <array>
#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tokwatch {

/// Why the store's sum of a provider, model and day is not that of the files.
enum class AuditReason {
    notReadYet,  ///< in the files, behind where they were read to
    deleted,     ///< in the files, of a day that is so old that the store has dropped it
    otherDay,    ///< counted on another day: by an earlier line, or in another time zone
    earlierLine, ///< counted by an earlier line of the response, which the store met first
    gone,        ///< counted from files that are gone, were cut since, or cannot be read now
    unexplained,
};

template<>
inline constexpr std::array<std::string_view, 6> caseNames<AuditReason>{
    "notReadYet", "deleted", "otherDay", "earlierLine", "gone", "unexplained"};

/// The logs beside the store, as far as sums depend on either.
struct LogAudit {
    /// The files of one root, a provider's agents' files apart.
    struct Group {
        ProviderID provider = ProviderID::claude;
        std::string root;
        bool isOfAgents = false;
        std::int64_t files = 0;
        LineTally lines;
        std::int64_t responses = 0; ///< that count from these files
        /// Countable lines that do not, as other lines of their responses do: here or elsewhere.
        std::int64_t repeated = 0;
        std::int64_t cumulativeOnly = 0; ///< files in the old form of Codex, which is not read
    };

    struct Key {
        ProviderID provider = ProviderID::claude;
        std::string model;
        std::string day; ///< day key
        friend auto operator<=>(const Key&, const Key&) = default;
    };
    struct Row {
        TokenCounts stored;
        TokenCounts inFiles;
        /// What of the store's sum is more than the files', by its reasons. They add up.
        std::map<AuditReason, TokenCounts> differences;
    };

    std::vector<Group> groups;
    std::map<Key, Row> rows;
    bool isExplained() const;

    /// What the store holds, the keys in the numbers of `responseKey`.
    struct Stored {
        struct Seen {
            std::string day;
            std::optional<ProviderID> provider; ///< where its form tells
        };
        std::vector<DailyRow> rows;
        std::unordered_map<std::uint64_t, Seen> seen;
        std::unordered_map<std::string, std::string> cursorTexts;

        Stored() = default; ///< nothing was ever stored
        explicit Stored(StoredAccounts& accounts);
    };

    /// `deletedBefore`: the day before whose day the store drops what it has. The reading has to
    /// be one of all lines (`KeepLines::all`) and all files.
    static LogAudit make(const LogReading& reading, const Stored& stored, const Calendar& calendar,
                         const std::string& deletedBefore);
};

} // namespace tokwatch
