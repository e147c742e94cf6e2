#pragma once

#include "KivoLooks/Measures.h"
#include "KivoPanel/SavedFrame.h"
#include "Tokwatch/Preferences/WidgetPreferences.h"

#include <QList>
#include <QRect>
#include <QSize>

namespace tokwatch {

/// Where the widget goes that was never left anywhere: at the end of the first screen's top edge,
/// as desktops keep their icons at its beginning. The origin where there is no screen.
QRect firstPlace(QSize size, const QList<kivo::ScreenArea>& screens);

/// The place with another size: it keeps the corner that is nearest to one of its screen's, and
/// stays on the visible part.
QRect resizedPlace(const QRect& place, QSize size, const QList<kivo::ScreenArea>& screens);

/// The size whose pixels come nearest: what a saved frame says of the widget that was left there.
WidgetSize widgetSizeOf(QSize pixels, const kivo::TypeScale& type);

} // namespace tokwatch
