#pragma once

#include "Tokwatch/Display/StatusTitle.h"

#include <string>

namespace tokwatch {

/// How the title is written: for people and plain bars, as the title's record, and as a custom
/// module of waybar.
enum class StatusFormat { text, json, waybar };

/// One line without its end, whatever the title's texts hold.
///
/// Where the title has no text, as with the icon alone and before anything is known, the text
/// format has the tooltip's first line, and waybar, which hides a module with an empty text, the
/// application's name.
std::string statusLine(const StatusTitle& title, StatusFormat format);

} // namespace tokwatch
