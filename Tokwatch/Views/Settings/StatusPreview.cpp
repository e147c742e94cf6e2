#include "Tokwatch/Views/Settings/StatusPreview.h"

#include "Tokwatch/Pictures/StatusPictures.h"
#include "Tokwatch/StatusItem/StatusTint.h"

#include <QPainter>
#include <QQuickWindow>

#include <cmath>

namespace tokwatch {
namespace {

/// What most panels leave to an item.
constexpr int itemHeight = 22;

QImage drawing(const TitlePreview& title, const Ink& ink, bool isSquare, int height) {
    const std::optional<ProviderID> provider = providerFromRawValue(title.provider.toStdString());
    if (title.percent >= 0 && isSquare) return gaugePicture(title.percent, ink, height);
    if (!title.text.isEmpty()) return titlePicture(provider, title.text, ink, height);
    return markPicture(provider, ink, height);
}

} // namespace

QColor panelColor(bool isDark) {
    return isDark ? QColor(0x1d, 0x1d, 0x21) : QColor(0xf1, 0xf1, 0xf4);
}

StatusPreview::StatusPreview(QQuickItem* parent) : QQuickPaintedItem(parent) {
    for (const auto changed :
         {&StatusPreview::titleChanged, &StatusPreview::panelChanged, &StatusPreview::shapeChanged})
        connect(this, changed, this, &StatusPreview::redraw);
}

void StatusPreview::itemChange(ItemChange change, const ItemChangeData& data) {
    if (change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange) redraw();
    QQuickPaintedItem::itemChange(change, data);
}

void StatusPreview::componentComplete() {
    QQuickPaintedItem::componentComplete();
    redraw();
}

void StatusPreview::redraw() {
    if (!isComponentComplete()) return;
    const double ratio = window() ? window()->effectiveDevicePixelRatio() : 1;
    const Ink ink{statusTint(static_cast<Severity>(shown.severity), dark)};
    picture = drawing(shown, ink, square, static_cast<int>(std::lround(itemHeight * ratio)));
    picture.setDevicePixelRatio(ratio);
    const QSizeF size = picture.deviceIndependentSize();
    setImplicitSize(std::ceil(size.width()), std::ceil(size.height()));
    update();
}

void StatusPreview::paint(QPainter* painter) {
    painter->drawImage(QPointF(0, 0), picture);
}

} // namespace tokwatch
