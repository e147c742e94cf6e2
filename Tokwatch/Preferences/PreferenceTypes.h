#pragma once

#include "TokwatchCore/Support/NamedCases.h"

namespace tokwatch {

/// What stands in the status area: the icon alone, or one provider's number beside it.
enum class MenuBarStyle { icon, provider };
template<>
inline constexpr std::array<std::string_view, 2> caseNames<MenuBarStyle>{"icon", "provider"};

/// Whether summaries lead with money or with token counts.
enum class SummaryUnit { cost, tokens };
template<>
inline constexpr std::array<std::string_view, 2> caseNames<SummaryUnit>{"cost", "tokens"};

enum class PopoverTab { usage, stats, models };
template<>
inline constexpr std::array<std::string_view, 3> caseNames<PopoverTab>{"usage", "stats", "models"};

} // namespace tokwatch
