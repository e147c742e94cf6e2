#include "Tokwatch/Pictures/StatusPictures.h"

#include "Tokwatch/Pictures/DigitStrokes.h"
#include "Tokwatch/Pictures/Marks.h"

#include <QFont>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <QPen>
#include <QTransform>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

namespace tokwatch {
namespace {

QImage emptyPicture(int width, int height) {
    QImage picture(width, height, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    return picture;
}

QColor faded(QColor colour, double opacity) {
    colour.setAlphaF(static_cast<float>(colour.alphaF() * opacity));
    return colour;
}

QPainterPath markIn(const QRectF& box, std::optional<ProviderID> provider) {
    return QTransform()
        .translate(box.left(), box.top())
        .scale(box.width() / markSide, box.height() / markSide)
        .map(mark(provider));
}

/// Fills the outlines; the halo is as wide as a thin line of text.
void drawOutlines(QPainter& painter, const QPainterPath& outlines, const Ink& ink, double height) {
    if (ink.halo.alpha() > 0)
        painter.strokePath(
            outlines, QPen(ink.halo, height * 0.1, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.fillPath(outlines, ink.colour);
}

/// Whole pixels, so that stems and edges are sharp at every size.
struct GaugeLayout {
    int side;
    int barHeight;
    int digitHeight;
    int digitGap;
    int edge; ///< the halo's width

    explicit GaugeLayout(int pixels)
        : side(pixels), barHeight(std::max(2, static_cast<int>(std::lround(pixels * 0.14)))),
          digitHeight(pixels - barHeight - std::max(1, static_cast<int>(pixels * 0.09))),
          digitGap(std::max(1, static_cast<int>(std::lround(pixels * 0.07)))),
          edge(std::max(1, pixels / 20)) {}
};

/// "100" is the one number of three digits; its first one needs less room than the noughts.
std::vector<int> digitWidths(qsizetype count, const GaugeLayout& layout) {
    if (count < 3) return std::vector(count, (layout.side - layout.digitGap) / 2);
    const int room = layout.side - 2 * layout.digitGap;
    const int nought = static_cast<int>(room * 0.37);
    return {room - 2 * nought, nought, nought};
}

/// The digits' strokes side by side, for a pen of `penWidth`.
QPainterPath digitLines(const QString& digits, int penWidth, const GaugeLayout& layout) {
    const std::vector<int> widths = digitWidths(digits.size(), layout);
    const int total = std::accumulate(widths.begin(), widths.end(), 0) +
                      layout.digitGap * (static_cast<int>(widths.size()) - 1);
    QPainterPath lines;
    int left = (layout.side - total) / 2;
    for (std::size_t index = 0; index < widths.size(); ++index) {
        const QRectF box(left, 0, widths[index], layout.digitHeight);
        const int digit = digits[static_cast<qsizetype>(index)].digitValue();
        lines.addPath(digitStrokes(digit, box, penWidth));
        left += widths[index] + layout.digitGap;
    }
    return lines;
}

/// The halo below all digits, so that none covers its neighbour.
void drawDigits(QPainter& painter, const QString& digits, const Ink& ink,
                const GaugeLayout& layout) {
    const double penShare = digits.size() < 3 ? 0.125 : 0.1;
    const int penWidth = std::max(1, static_cast<int>(std::lround(layout.side * penShare)));
    const QPainterPath lines = digitLines(digits, penWidth, layout);
    if (ink.halo.alpha() > 0)
        painter.strokePath(lines, QPen(ink.halo, penWidth + 2 * layout.edge, Qt::SolidLine,
                                       Qt::RoundCap, Qt::RoundJoin));
    painter.strokePath(lines,
                       QPen(ink.colour, penWidth, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
}

void drawBar(QPainter& painter, double share, const Ink& ink, const GaugeLayout& layout) {
    const QRectF bar(0, layout.side - layout.barHeight, layout.side, layout.barHeight);
    const double radius = layout.barHeight / 2.0;
    painter.setPen(Qt::NoPen);
    if (ink.halo.alpha() > 0) {
        painter.setBrush(ink.halo);
        painter.drawRect(bar.adjusted(0, -layout.edge, 0, 0));
    }
    painter.setBrush(faded(ink.colour, 0.3));
    painter.drawRoundedRect(bar, radius, radius);
    if (share <= 0) return;
    // Something left is something to see.
    const double filled = std::max<double>(layout.barHeight, std::round(bar.width() * share));
    painter.setBrush(ink.colour);
    painter.drawRoundedRect(QRectF(bar.topLeft(), QSizeF(filled, bar.height())), radius, radius);
}

/// Text whose digits all take the widest digit's room.
class TabularText {
  public:
    TabularText(const QString& ownText, int pixelSize) : text(ownText) {
        font.setPixelSize(pixelSize);
        font.setWeight(QFont::Medium);
        font.setHintingPreference(QFont::PreferNoHinting); // the outlines have none either
        const QFontMetricsF metrics(font);
        for (char digit = '0'; digit <= '9'; ++digit)
            digitWidth = std::max(digitWidth, metrics.horizontalAdvance(QLatin1Char(digit)));
        for (const QChar character : text)
            width += advance(metrics, character);
        QPainterPath digit;
        digit.addText({}, font, QStringLiteral("0"));
        middle = digit.boundingRect().center().y();
    }

    double totalWidth() const { return width; }
    /// The middle of the digits, relative to the baseline: negative, as it is above.
    double digitMiddle() const { return middle; }

    QPainterPath outlines(QPointF baseline) const {
        QPainterPath path;
        const QFontMetricsF metrics(font);
        for (const QChar character : text) {
            const double room = advance(metrics, character);
            const double slack = room - metrics.horizontalAdvance(character);
            path.addText(baseline + QPointF(slack / 2, 0), font, character);
            baseline.rx() += room;
        }
        return path;
    }

  private:
    double advance(const QFontMetricsF& metrics, QChar character) const {
        return character.isDigit() ? digitWidth : metrics.horizontalAdvance(character);
    }

    QString text;
    QFont font;
    double digitWidth = 0;
    double width = 0;
    double middle = 0;
};

} // namespace

QImage markPicture(std::optional<ProviderID> provider, const Ink& ink, int side) {
    QImage picture = emptyPicture(side, side);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    drawOutlines(painter, markIn(QRectF(0, 0, side, side), provider), ink, side);
    return picture;
}

QImage gaugePicture(int percentLeft, const Ink& ink, int side) {
    const int percent = std::clamp(percentLeft, 0, 100);
    const GaugeLayout layout(side);
    QImage picture = emptyPicture(side, side);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    drawDigits(painter, QString::number(percent), ink, layout);
    drawBar(painter, percent / 100.0, ink, layout);
    return picture;
}

QImage titlePicture(std::optional<ProviderID> provider, const QString& text, const Ink& ink,
                    int height) {
    // Twenty-one parts, the usual height in pixels: 2 above the mark, 17 of it, 2 below.
    const double part = height / 21.0;
    const TabularText label(text, static_cast<int>(std::lround(15 * part)));
    const QRectF markBox(part, 2 * part, 17 * part, 17 * part);
    const double textLeft = markBox.right() + 4 * part;
    const int width = static_cast<int>(std::ceil(textLeft + label.totalWidth() + part));
    // The digits share the mark's middle.
    const double baseline = std::round(height / 2.0 - label.digitMiddle());
    QImage picture = emptyPicture(width, height);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath outlines = markIn(markBox, provider);
    outlines.addPath(label.outlines({textLeft, baseline}));
    drawOutlines(painter, outlines, ink, height);
    return picture;
}

QColor statusTint(Severity severity, bool onDarkPanel) {
    switch (severity) {
    case Severity::normal:
        return onDarkPanel ? QColor(0xf2, 0xf2, 0xf2) : QColor(0x23, 0x23, 0x23);
    case Severity::warning:
        return onDarkPanel ? QColor(0xff, 0xa0, 0x33) : QColor(0xb0, 0x50, 0x00);
    case Severity::critical:
        return onDarkPanel ? QColor(0xff, 0x76, 0x6c) : QColor(0xc8, 0x1e, 0x1e);
    }
    return {};
}

Ink statusInk(const InkChoice& choice) {
    Ink ink{statusTint(choice.severity, choice.onDarkPanel)};
    if (choice.isOld) ink.colour.setAlphaF(oldOpacity);
    if (choice.hasHalo)
        ink.halo = choice.onDarkPanel ? QColor(0, 0, 0, 0xa0) : QColor(0xff, 0xff, 0xff, 0xa0);
    return ink;
}

} // namespace tokwatch
