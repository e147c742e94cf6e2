#pragma once

namespace tokwatch {

/// What stands in the status area: the icon alone, or one provider's number beside it.
enum class MenuBarStyle { icon, provider };

/// Whether summaries lead with money or with token counts.
enum class SummaryUnit { cost, tokens };

enum class PopoverTab { usage, stats, models };

} // namespace tokwatch
