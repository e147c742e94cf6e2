#pragma once

#include "TokwatchCore/Records/ProviderID.h"

#include <QIcon>
#include <QPainterPath>

#include <optional>

namespace tokwatch {

/// The side of the square in which the marks below are drawn.
inline constexpr double markSide = 24;

/// The sign of a provider, or the application's own gauge: one filled outline within 0…24 in both
/// directions, for any single colour. These are drawings of ours, not the makers' logos.
QPainterPath mark(std::optional<ProviderID> provider);

/// A provider's place among the theme's side-by-side colours, the same everywhere.
int seriesOf(ProviderID provider);

/// The application's icon as windows and task bars show it, in the usual sizes.
QIcon applicationIcon();

} // namespace tokwatch
