#pragma once

#include "Tokwatch/Report/FileResponses.h"
#include "Tokwatch/Report/NumberedTexts.h"
#include "TokwatchCore/Ingestion/ClaudeLogParser.h"
#include "TokwatchCore/Ingestion/JSONLTail.h"
#include "TokwatchCore/Ingestion/LogFiles.h"
#include "TokwatchCore/Records/UsageEvent.h"

#include <cstdint>
#include <optional>
#include <stop_token>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace tokwatch {

/// Reads one log file after the other from its start to where it ended when it was listed. Keeps
/// memory to read and parse in, so one belongs to one thread at a time.
class ResponseReader {
  public:
    explicit ResponseReader(KeepLines kept, std::stop_token stopped = {})
        : keep(kept), stop(std::move(stopped)) {}

    /// None where it was stopped. Throws std::system_error, or another exception with the reason,
    /// when the file cannot be read; whoever cares asks `isGone`.
    std::optional<FileResponses> read(ProviderID provider, const LogFile& file);

  private:
    void readLines(const LogFile& file);
    void readDocument(const LogFile& file);
    void begin(ProviderID provider);
    void add(const UsageEvent& event, std::string_view directory, bool isUnfinished);
    std::uint32_t sessionOf(const UsageEvent& event, std::string_view directory);

    const KeepLines keep;
    const std::stop_token stop;
    TailBuffer buffer;
    ClaudeLogParser claude;
    FileResponses found;
    NumberedTexts models;
    NumberedTexts sessions;
    std::unordered_map<std::uint64_t, std::uint32_t> positions; ///< of the keys in `found`
};

} // namespace tokwatch
