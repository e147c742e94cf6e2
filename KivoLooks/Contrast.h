#pragma once

#include <QColor>

namespace kivo {

/// The contrast of two opaque colours as the Web Content Accessibility Guidelines 2 define it, 1 to
/// 21.
double contrastRatio(const QColor& a, const QColor& b);

} // namespace kivo
