#pragma once

#include "Tokwatch/Display/StatusTitle.h"

#include <optional>
#include <string>

namespace tokwatch {

class Preferences;

/// How the title is written: for people and plain bars, as the title's record, and as a custom
/// module of waybar.
enum class StatusFormat { text, json, waybar };

/// The title as a line of output.
struct StatusReport {
    StatusTitle title;
    /// What is left of the window in the text, 0…100; none without a text.
    std::optional<int> percentLeft;

    friend bool operator==(const StatusReport&, const StatusReport&) = default;
};

/// The report by the user's settings. Reads what it depends on as observables.
StatusReport statusReport(const Preferences& preferences, const LimitsByProvider& limits, Date now);

/// One line without its end, whatever the title's texts hold.
///
/// Where the title has no text, as with the icon alone and before anything is known, the text
/// format has the tooltip's first line, and waybar, which hides a module with an empty text, the
/// application's name.
std::string statusLine(const StatusReport& report, StatusFormat format);

} // namespace tokwatch
