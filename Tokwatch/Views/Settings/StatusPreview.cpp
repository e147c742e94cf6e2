#include "Tokwatch/Views/Settings/StatusPreview.h"

#include "Tokwatch/Display/LimitTexts.h"
#include "Tokwatch/Pictures/StatusPictures.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Views/Common/Text.h"

#include <QPainter>
#include <QQuickWindow>

#include <algorithm>
#include <cmath>

namespace tokwatch {
namespace {

LimitsByProvider sampleLimits(const std::vector<ProviderID>& providers, Date now) {
    constexpr double minute = 60;
    ProviderLimits sample;
    sample.windows = {
        {"session", "Session", 0.58, 300 * minute, now + Seconds{185 * minute},
         LimitSource::live()},
        {"weekly", "Weekly", 0.36, 10'080 * minute, now + Seconds{4'000 * minute},
         LimitSource::live()},
    };
    LimitsByProvider limits;
    for (const ProviderID provider : providers)
        if (traits(provider).publishesLimits) limits[provider] = sample;
    return limits;
}

QString spokenSeverity(Severity severity) {
    switch (severity) {
    case Severity::normal:
        return {};
    case Severity::warning:
        return QStringLiteral(", yellow");
    case Severity::critical:
        return QStringLiteral(", red");
    }
    return {};
}

/// "Claude has no number. No login was found. …"
QString whyMissing(ProviderID provider, const LimitsByProvider& limits, bool claudeLiveLimits) {
    const ProviderLimits* known = limitsOf(limits, provider);
    const LimitNotice notice = known == nullptr
                                   ? unknownLimitsNotice(provider, claudeLiveLimits, true)
                                   : limitNotice(provider, *known, claudeLiveLimits);
    return QString("%1 has no number. %2").arg(text(displayName(provider)), text(notice.sentence));
}

/// What most panels leave to an item.
constexpr int itemHeight = 22;

QImage drawing(const TitlePreview& title, const Ink& ink, bool isSquare, int height) {
    if (title.percent < 0) return markPicture(std::nullopt, ink, height);
    if (isSquare) return gaugePicture(title.percent, ink, height);
    return titlePicture(providerFromRawValue(title.provider.toStdString()), title.text, ink,
                        height);
}

} // namespace

TitlePreview titlePreview(const Preferences& preferences, const LimitsByProvider& limits,
                          Date now) {
    const std::vector<ProviderID> enabled = preferences.enabledProviders();
    TitlePreview preview;
    const bool isUnknown = statusContent(preferences.plain(), limits, now).steps.empty();
    const StatusTitle title =
        statusTitle(preferences.plain(), isUnknown ? sampleLimits(enabled, now) : limits, now);
    preview.isSample = isUnknown && title.text;
    preview.text = text(title.text.value_or(""));
    if (title.provider && !title.text)
        preview.missing = whyMissing(*title.provider, limits, preferences.claudeLiveLimits);
    preview.severity = static_cast<int>(title.severity);
    if (title.provider) preview.provider = text(rawValue(*title.provider));
    preview.percent = title.percentLeft.value_or(-1);
    const QString name = title.provider ? text(displayName(*title.provider)) : "Tokwatch";
    preview.spoken = (name + u' ' + preview.text).trimmed() + spokenSeverity(title.severity);
    return preview;
}

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

#include "moc_StatusPreview.cpp"
