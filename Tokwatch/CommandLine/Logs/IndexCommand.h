#pragma once

#include "Tokwatch/CommandLine/CommandSurroundings.h"
#include "Tokwatch/Indexing/Indexer.h"

namespace tokwatch {

/// One pass as a command makes it: with a progress bar, waiting for its end. CommandError when the
/// store fails.
struct IndexReport {
    IndexOutcome outcome;
    IndexStatistics statistics;
    double seconds = 0;
    std::int64_t bytesRead() const;
};
IndexReport runIndexPass(const CommandSurroundings& surroundings,
                         const std::shared_ptr<UsageStore>& store);

void printIndexReport(const CommandSurroundings& surroundings, const IndexReport& report);
/// Throws CommandError when some files or folders could not be read.
void requireWhole(const IndexReport& report);

} // namespace tokwatch
