#pragma once

#include <QColor>
#include <QString>
#include <QStringView>

#include <optional>

namespace kivo {

/// The style sheet (GTK's CSS) that a running bar was started with: the one named on its command
/// line, or the user's, or the system's. Empty when there is none.
QString barStyleSheet(uint process);

/// The colour that a bar's style sheet gives to text in the status area. Follows definitions and
/// imports; none where the sheet leaves the colour to the desktop's theme, or cannot be read.
std::optional<QColor> barTextColour(const QString& styleSheetPath);

} // namespace kivo
