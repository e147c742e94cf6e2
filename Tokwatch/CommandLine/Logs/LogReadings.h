#pragma once

#include "Tokwatch/CommandLine/CommandSurroundings.h"
#include "Tokwatch/Report/ResponseFiles.h"
#include "TokwatchCore/Records/RecordCoding.h"

#include <optional>

namespace tokwatch {

/// What the assistants' files say, read with a progress bar: of one provider, or of all.
LogReading readLogs(const CommandSurroundings& surroundings, std::optional<ProviderID> provider,
                    Date touchedSince, KeepLines keep = KeepLines::last);

/// Names what is missing, files and folders that could not be read or went away: for people, and
/// as "unread" and "gone" for programs.
void printUnread(const CommandSurroundings& surroundings, const LogReading& reading);
void putUnread(Json& json, const LogReading& reading);

/// CommandError when something could not be read: what could is shown, and what is missing must not
/// look like success.
void requireWhole(const CommandSurroundings& surroundings, const LogReading& reading);

} // namespace tokwatch
