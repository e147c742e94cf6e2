#pragma once

#include "KivoLooks/Measures.h"
#include "KivoLooks/Palette.h"
#include "Tokwatch/Widget/WidgetDisplay.h"

#include <QSize>

class QPainter;

namespace tokwatch {

/// What the widget is drawn with.
struct WidgetLooks {
    kivo::Palette colors;
    kivo::TypeScale type;
    bool isMirrored = false; ///< the desktop reads from the right
    bool isRounded = false;  ///< the corners are left to what lies below the window
    friend bool operator==(const WidgetLooks&, const WidgetLooks&) = default;
};

/// How many pixels the widget has. Large ones are as wide as two small ones and the gap between
/// them, so that widgets beside each other line up; larger type makes all of them larger.
QSize widgetPixels(WidgetSize size, const kivo::TypeScale& type);

/// Draws the widget into its pixels, as one picture: it is shown without Qt Quick, which would
/// double the memory of its process, and is drawn anew only when it shows something else.
void paintWidget(QPainter& painter, const WidgetDisplay& display, const WidgetLooks& looks);

} // namespace tokwatch
