#pragma once

#include "TokwatchCore/Ingestion/LineVerdict.h"
#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Records/UsageEvent.h"
#include "TokwatchCore/Support/SharedText.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace tokwatch {

class JSONReader;

/// What one Codex line tells: tokens used, or the account's limits as Codex last saw them.
struct CodexLine {
    std::variant<UsageEvent, ProviderLimits> value;

    static CodexLine usage(UsageEvent event) { return {std::move(event)}; }
    static CodexLine limits(ProviderLimits read) { return {std::move(read)}; }
    friend bool operator==(const CodexLine&, const CodexLine&) = default;
};

/// Turns lines of Codex's session logs into events and limits. A log names its session ("session")
/// and model ("model") once, in lines before those that need them; both are kept in `context`,
/// which the file's cursor carries from one pass to the next. One parser belongs to one thread at a
/// time.
class CodexLogParser {
  public:
    std::map<std::string, std::string> context;
    /// Where the session works, as its log named it last. No sum of the store's needs it, so it is
    /// no part of the context.
    std::string directory;

    CodexLogParser();
    ~CodexLogParser();

    /// Nothing for lines that only change the context, and for every other line, malformed ones
    /// included.
    std::optional<CodexLine> parse(std::string_view line);
    /// What the last line came to. Limits are `other`, or `cumulative` where they stand beside a
    /// running total.
    LineVerdict verdict() const { return last; }

  private:
    std::optional<CodexLine> none(LineVerdict why);

    LineVerdict last = LineVerdict::other;
    SharedText session; ///< of the last usage
    SharedText model;
    std::unique_ptr<JSONReader> reader;
};

} // namespace tokwatch
