#pragma once

#include "Tokwatch/Display/StatusTitle.h"

#include <string>

namespace tokwatch {

/// How the title is written (docs/integrations.md shows each at work).
enum class StatusFormat {
    text,    ///< for people and plain bars
    json,    ///< the title's record
    waybar,  ///< a custom module's object
    pango,   ///< the text in Pango's markup, in the colour of its severity
    polybar, ///< the same with polybar's tags
    tmux,    ///< the same with tmux's styles
};

/// One line without its end, whatever the title's texts hold.
///
/// Where the title has no text, as with the icon alone and before anything is known, lines of text
/// have the tooltip's first line, and waybar, which hides a module with an empty text, the
/// application's name. What a text has of a format's own commands commands nothing.
std::string statusLine(const StatusTitle& title, StatusFormat format);

} // namespace tokwatch
