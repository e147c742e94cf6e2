#include "Tokwatch/Widget/WidgetPlace.h"

#include "Tokwatch/Widget/WidgetPicture.h"

#include <QPoint>

#include <algorithm>

namespace tokwatch {
namespace {

constexpr int firstMargin = 24; ///< to the screen's edges

} // namespace

QRect firstPlace(QSize size, const QList<kivo::ScreenArea>& screens) {
    if (screens.isEmpty()) return {QPoint(), size};
    const QRect& visible = screens.first().visible;
    return {QPoint(visible.right() + 1 - firstMargin - size.width(), visible.top() + firstMargin),
            size};
}

QRect resizedPlace(const QRect& place, QSize size, const QList<kivo::ScreenArea>& screens) {
    QRect next(place.topLeft(), size);
    const auto holding = std::ranges::find_if(screens, [&place](const kivo::ScreenArea& screen) {
        return screen.whole.contains(place.center());
    });
    if (holding == screens.end()) return next;
    if (place.center().x() > holding->visible.center().x()) next.moveRight(place.right());
    if (place.center().y() > holding->visible.center().y()) next.moveBottom(place.bottom());
    return kivo::visiblePlace(kivo::remembering({}, next, {*holding}), {*holding});
}

WidgetSize widgetSizeOf(QSize pixels, const kivo::TypeScale& type) {
    return std::ranges::min(allCases<WidgetSize>, {}, [&](WidgetSize size) {
        const QSize distance = widgetPixels(size, type) - pixels;
        return std::abs(distance.width()) + std::abs(distance.height());
    });
}

} // namespace tokwatch
