#include "Tokwatch/Widget/WidgetPicture.h"

#include "Tokwatch/Display/SummaryTexts.h"
#include "Tokwatch/Pictures/Columns.h"
#include "Tokwatch/Pictures/Marks.h"
#include "Tokwatch/Pictures/MeterColors.h"

#include <QFont>
#include <QFontMetricsF>
#include <QPaintDevice>
#include <QPainter>
#include <QPainterPath>
#include <QPen>
#include <QTransform>

#include <algorithm>
#include <cmath>
#include <string_view>

namespace tokwatch {
namespace {

// Lengths at the usual size of type; `Sheet` makes them larger with it.

constexpr double side = 168; ///< of the small widget
constexpr double gap = 16;   ///< between two small ones
constexpr double padding = 14;
constexpr double captionLine = 15;
constexpr double markSize = 16;
constexpr double afterMark = 22;  ///< where texts begin beside a mark, and below them
constexpr double figureSize = 46; ///< of the small widget's number
constexpr double barHeight = 8;
constexpr double highestLine = 28; ///< of the limits, where there is room
constexpr double groupGap = 6;     ///< between providers
constexpr double costsHeight = 136;

double scaleOf(const kivo::TypeScale& type) {
    return type.body / double(kivo::TypeScale().body);
}

QString text(std::string_view utf8) {
    return QString::fromUtf8(utf8);
}

enum class End { leading, trailing };

/// The widget's paper: places are laid out from the left at the usual size of type, and drawn where
/// they belong.
class Sheet {
  public:
    Sheet(QPainter& on, const WidgetLooks& with, const WidgetDisplay& what)
        : painter(on), looks(with), scale(scaleOf(with.type)),
          width(widgetPixels(what.size, with.type).width()),
          ratio(on.device()->devicePixelRatioF()) {}

    const kivo::Palette& colors() const { return looks.colors; }
    const kivo::TypeScale& type() const { return looks.type; }

    QFont font(double pixels, QFont::Weight weight = QFont::Normal) const {
        QFont font(looks.type.family);
        font.setPixelSize(static_cast<int>(std::lround(pixels)));
        font.setWeight(weight);
        return font;
    }
    QFont figures() const { return font(figureSize * scale, QFont::DemiBold); }
    QFont caption(QFont::Weight weight = QFont::Normal) const {
        return font(looks.type.caption, weight);
    }
    QFont body(QFont::Weight weight = QFont::Normal) const { return font(looks.type.body, weight); }
    double widthOf(const QString& words, const QFont& in) const {
        return QFontMetricsF(in).horizontalAdvance(words) / scale;
    }

    /// In the middle of the box's height, shortened where it is wider.
    void write(const QRectF& box, const QString& words, const QFont& in, const QColor& color,
               End end = End::leading) {
        const QRectF place = placed(box);
        const bool isLeft = (end == End::leading) != looks.isMirrored;
        painter.setFont(in);
        painter.setPen(color);
        painter.drawText(
            place,
            static_cast<int>((isLeft ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter) |
                Qt::TextSingleLine | Qt::TextDontClip,
            QFontMetricsF(in).elidedText(words, Qt::ElideRight, place.width()));
    }
    void writeCentred(const QRectF& box, const QString& words, const QFont& in,
                      const QColor& color) {
        painter.setFont(in);
        painter.setPen(color);
        painter.drawText(placed(box), Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, words);
    }
    void fill(const QRectF& box, double radius, const QColor& color) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(color);
        painter.drawRoundedRect(placed(box), radius * scale, radius * scale);
    }
    void outline(const QRectF& box, double radius, const QColor& inside, const QColor& edge) {
        const double pixel = 1 / ratio;
        painter.setPen(QPen(edge, pixel));
        painter.setBrush(inside);
        painter.drawRoundedRect(placed(box).adjusted(pixel / 2, pixel / 2, -pixel / 2, -pixel / 2),
                                radius * scale, radius * scale);
    }
    void line(const QRectF& box, const QColor& color) {
        QRectF place = placed(box);
        place.setHeight(1 / ratio);
        painter.fillRect(place, color);
    }
    void column(const QRectF& box, const QColor& color) {
        painter.fillPath(columns::roundedAbove(placed(box)), color);
    }
    void sign(const QPointF& at, double size, std::optional<ProviderID> provider,
              const QColor& color) {
        const QRectF box = placed({at, QSizeF(size, size)});
        painter.fillPath(QTransform()
                             .translate(box.left(), box.top())
                             .scale(box.width() / markSide, box.height() / markSide)
                             .map(mark(provider)),
                         color);
    }

  private:
    double snapped(double length) const { return std::round(length * ratio) / ratio; }
    /// On whole pixels of the screen.
    QRectF placed(const QRectF& box) const {
        const double left = snapped(box.left() * scale);
        const double right = snapped(box.right() * scale);
        const double top = snapped(box.top() * scale);
        const QSizeF size(right - left, snapped(box.bottom() * scale) - top);
        return {QPointF(looks.isMirrored ? width - right : left, top), size};
    }

    QPainter& painter;
    const WidgetLooks& looks;
    const double scale;
    const double width;
    const double ratio;
};

MeterColors colorsOf(const WidgetDisplay::Bar& bar, const kivo::Palette& colors) {
    return meterColors(colors, bar.severity, bar.isOld);
}

void paintBar(Sheet& sheet, const QRectF& box, const WidgetDisplay::Bar& bar) {
    const double radius = box.height() / 2;
    sheet.fill(box, radius, sheet.colors().track);
    if (bar.leftFraction > 0)
        sheet.fill({box.topLeft(),
                    QSizeF(std::max(box.height(), box.width() * bar.leftFraction), box.height())},
                   radius, colorsOf(bar, sheet.colors()).fill);
    if (!bar.timeLeftFraction) return;
    const QSizeF mark(4, box.height() + 6);
    const QPointF at(box.left() + *bar.timeLeftFraction * (box.width() - mark.width()),
                     box.top() - 3);
    sheet.outline({at, mark}, 2, sheet.colors().timeMark, sheet.colors().card);
}

void paintColumns(Sheet& sheet, const QRectF& box, const std::vector<double>& days, bool isOld) {
    const double pitch =
        box.width() / (static_cast<double>(days.size()) - 1 + columns::widthFraction);
    const QColor color = meterColors(sheet.colors(), Severity::normal, isOld).fill;
    for (std::size_t day = 0; day < days.size(); ++day) {
        if (!(days[day] > 0)) continue;
        const double height = std::max(days[day] * box.height(), columns::leastHeight);
        sheet.column({box.left() + static_cast<double>(day) * pitch, box.bottom() - height,
                      pitch * columns::widthFraction, height},
                     color);
    }
    sheet.line({box.bottomLeft(), QSizeF(box.width(), 1)}, sheet.colors().outline);
}

/// Under the sheet's last line; `isOld` makes it a warning.
void paintNote(Sheet& sheet, const QRectF& inside, const WidgetDisplay& display) {
    sheet.write({inside.left(), inside.bottom() - captionLine, inside.width(), captionLine},
                text(display.note), sheet.caption(),
                display.isOld ? sheet.colors().warningText : sheet.colors().secondaryText);
}

struct Headline {
    std::optional<ProviderID> sign;
    QString title;
    QString label;
    QString figure;
    QString unit; ///< behind the figure
    QColor color;
};

void paintHeadline(Sheet& sheet, const QRectF& inside, const Headline& headline) {
    const kivo::Palette& colors = sheet.colors();
    const double x = inside.left();
    const double y = inside.top();
    sheet.sign({x, y + 1}, markSize, headline.sign,
               headline.sign ? colors.series.value(seriesOf(*headline.sign)) : colors.accent);
    sheet.write({x + afterMark, y, inside.width() - afterMark, 18}, headline.title,
                sheet.body(QFont::DemiBold), colors.text);
    sheet.write({x, y + 23, inside.width(), captionLine}, headline.label, sheet.caption(),
                colors.secondaryText);
    sheet.write({x, y + 38, inside.width(), 50}, headline.figure, sheet.figures(), headline.color);
    const double after = sheet.widthOf(headline.figure, sheet.figures()) + 6;
    sheet.write({x + after, y + 61, inside.width() - after, 20}, headline.unit, sheet.body(),
                colors.secondaryText);
}

void paintSmall(Sheet& sheet, const QRectF& inside, const WidgetDisplay& display) {
    const kivo::Palette& colors = sheet.colors();
    // Without a note there is room to breathe.
    const double y = inside.top() + (display.note.empty() ? 102 : 96);
    if (!display.providers.empty()) {
        const WidgetDisplay::Provider& provider = display.providers.front();
        const WidgetDisplay::Bar& bar = provider.bars.front();
        paintHeadline(sheet, inside,
                      {provider.id, text(displayName(provider.id)), text(bar.label),
                       text(bar.leftText), QStringLiteral("left"), colorsOf(bar, colors).figure});
        paintBar(sheet, {inside.left(), y, inside.width(), barHeight}, bar);
        sheet.write({inside.left(), y + 14, inside.width(), captionLine}, text(display.reset),
                    sheet.caption(), colors.secondaryText);
    } else {
        paintHeadline(sheet, inside,
                      {std::nullopt,
                       text(display.costs->month) + QStringLiteral(" in 30 days"),
                       text(display.costs->todayLabel) + text(SummaryTexts::estimateSuffix),
                       text(display.costs->today),
                       {},
                       meterColors(colors, Severity::normal, display.isOld).figure});
        paintColumns(sheet, {inside.left(), y - 4, inside.width(), 28}, display.costs->days,
                     display.isOld);
    }
    paintNote(sheet, inside, display);
}

void paintProviderLine(Sheet& sheet, const QRectF& line, const WidgetDisplay::Provider& provider) {
    const kivo::Palette& colors = sheet.colors();
    const QString name = text(displayName(provider.id));
    const QFont bold = sheet.body(QFont::DemiBold);
    sheet.sign({line.left(), line.center().y() - 7}, 14, provider.id,
               colors.series.value(seriesOf(provider.id)));
    sheet.write({line.left() + afterMark, line.top(), line.width() - afterMark, line.height()},
                name, bold, colors.text);
    const double x = line.left() + afterMark + sheet.widthOf(name, bold) + 8;
    const double room = line.right() - x;
    const QString notice = text(provider.notice);
    const double noticeWidth = std::min(sheet.widthOf(notice, sheet.caption()) + 1, room);
    sheet.write({x, line.top(), std::max(room - noticeWidth - 8, 0.0), line.height()},
                text(provider.plan), sheet.caption(), colors.secondaryText);
    sheet.write({line.right() - noticeWidth, line.top(), noticeWidth, line.height()}, notice,
                sheet.caption(), colors.warningText, End::trailing);
}

void paintLimitLine(Sheet& sheet, const QRectF& line, const WidgetDisplay::Bar& bar) {
    const kivo::Palette& colors = sheet.colors();
    constexpr double labelWidth = 94;
    constexpr double percentWidth = 38;
    constexpr double resetWidth = 50;
    const double resetLeft = line.right() - resetWidth;
    const double percentLeft = resetLeft - 4 - percentWidth;
    const double barLeft = line.left() + afterMark + labelWidth + 8;
    const auto part = [&line](double left, double width) {
        return QRectF(left, line.top(), width, line.height());
    };
    sheet.write(part(line.left() + afterMark, labelWidth), text(bar.label), sheet.body(),
                colors.text);
    paintBar(sheet,
             {barLeft, std::round(line.center().y() - barHeight / 2), percentLeft - 4 - barLeft,
              barHeight},
             bar);
    sheet.write(part(percentLeft, percentWidth), text(bar.leftText), sheet.body(QFont::DemiBold),
                colorsOf(bar, colors).figure, End::trailing);
    sheet.write(part(resetLeft, resetWidth), text(bar.resetText), sheet.caption(),
                colors.secondaryText, End::trailing);
}

void paintProviders(Sheet& sheet, const QRectF& inside, const WidgetDisplay& display) {
    double lines = display.note.empty() ? 0 : 1;
    for (const WidgetDisplay::Provider& provider : display.providers)
        lines += 1 + static_cast<double>(provider.bars.size());
    const double gaps = groupGap * static_cast<double>(display.providers.size() - 1);
    const double height = std::min(std::floor((inside.height() - gaps) / lines), highestLine);
    // Few of them stand in the middle of their room.
    const double spare = std::floor((inside.height() - gaps - lines * height) / 2);
    QRectF line(inside.left(), inside.top() + spare, inside.width(), height);
    const auto next = [&line, height] { line.translate(0, height); };
    for (const WidgetDisplay::Provider& provider : display.providers) {
        paintProviderLine(sheet, line, provider);
        next();
        for (const WidgetDisplay::Bar& bar : provider.bars) {
            paintLimitLine(sheet, line, bar);
            next();
        }
        line.translate(0, groupGap);
    }
    paintNote(sheet, inside, display);
}

void paintCosts(Sheet& sheet, const QRectF& inside, const WidgetDisplay& display) {
    const kivo::Palette& colors = sheet.colors();
    const WidgetDisplay::Costs& costs = *display.costs;
    const QColor figure = meterColors(colors, Severity::normal, display.isOld).figure;
    const double middle = inside.left() + 104;
    const auto amount = [&](double x, double width, const QString& label,
                            const std::string& value) {
        sheet.write({x, inside.top(), width, captionLine}, label, sheet.caption(),
                    colors.secondaryText);
        sheet.write({x, inside.top() + captionLine, width, 26}, text(value),
                    sheet.font(sheet.type().figure, QFont::DemiBold), figure);
    };
    amount(inside.left(), middle - inside.left() - 8, text(costs.todayLabel), costs.today);
    amount(middle, inside.right() - middle,
           text(SummaryTexts::period(30)) + text(SummaryTexts::estimateSuffix), costs.month);
    const double top = inside.top() + captionLine + 34;
    const double bottom = inside.bottom() - captionLine - 4;
    paintColumns(sheet, {inside.left(), top, inside.width(), bottom - top}, costs.days,
                 display.isOld);
    const QRectF labels(inside.left(), bottom + 4, inside.width(), captionLine);
    sheet.write(labels, text(costs.firstDay), sheet.caption(), colors.secondaryText);
    sheet.write(labels, text(costs.todayLabel), sheet.caption(QFont::DemiBold), colors.text,
                End::trailing);
}

void paintMedium(Sheet& sheet, const QRectF& inside, const WidgetDisplay& display) {
    if (!display.providers.empty()) return paintProviders(sheet, inside, display);
    const double noteHeight = display.note.empty() ? 0 : captionLine + 4;
    paintCosts(sheet, inside.adjusted(0, 0, 0, -noteHeight), display);
    paintNote(sheet, inside, display);
}

void paintLarge(Sheet& sheet, const QRectF& inside, const WidgetDisplay& display) {
    if (display.providers.empty()) return paintMedium(sheet, inside, display);
    const double top = inside.bottom() - costsHeight;
    constexpr double distance = 12;
    paintProviders(sheet, {inside.topLeft(), QPointF(inside.right(), top - 2 * distance)}, display);
    sheet.line({inside.left(), top - distance, inside.width(), 1}, sheet.colors().hairline);
    paintCosts(sheet, {QPointF(inside.left(), top), inside.bottomRight()}, display);
}

void paintEmpty(Sheet& sheet, const QRectF& inside) {
    const kivo::Palette& colors = sheet.colors();
    const QPointF centre = inside.center();
    sheet.sign({centre.x() - 14, centre.y() - 48}, 28, std::nullopt, colors.muted);
    sheet.writeCentred({inside.left(), centre.y() - 10, inside.width(), 20},
                       text(WidgetDisplay::emptyTitle), sheet.body(QFont::DemiBold), colors.text);
    sheet.writeCentred({inside.left(), centre.y() + 12, inside.width(), 40},
                       text(WidgetDisplay::emptyHint), sheet.caption(), colors.secondaryText);
}

QSizeF usualSize(WidgetSize size) {
    constexpr double twice = 2 * side + gap;
    switch (size) {
    case WidgetSize::small:
        return {side, side};
    case WidgetSize::medium:
        return {twice, side};
    case WidgetSize::large:
        break;
    }
    return {twice, twice};
}

} // namespace

QSize widgetPixels(WidgetSize size, const kivo::TypeScale& type) {
    return (usualSize(size) * scaleOf(type)).toSize();
}

void paintWidget(QPainter& painter, const WidgetDisplay& display, const WidgetLooks& looks) {
    Sheet sheet(painter, looks, display);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF whole(QPointF(), usualSize(display.size));
    sheet.outline(whole, looks.isRounded ? kivo::Spacing().cardRadius : 0, looks.colors.card,
                  looks.colors.outline);
    const QRectF inside = whole.adjusted(padding, padding, -padding, -padding);
    if (!display.isKnown) return paintEmpty(sheet, inside);
    switch (display.size) {
    case WidgetSize::small:
        return paintSmall(sheet, inside, display);
    case WidgetSize::medium:
        return paintMedium(sheet, inside, display);
    case WidgetSize::large:
        return paintLarge(sheet, inside, display);
    }
}

} // namespace tokwatch
