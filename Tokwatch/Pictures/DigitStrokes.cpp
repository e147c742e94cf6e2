#include "Tokwatch/Pictures/DigitStrokes.h"

#include <QTransform>

namespace tokwatch {
namespace {

/// The centre lines' extent, and what the digits share. A stroke that ends at an edge, with its cap
/// flat, goes on to where the ink of the others ends.
struct Frame {
    QRectF box;
    double inset; ///< from the ink's edge to the centre lines

    double leftEdge() const { return left() - inset; }
    double rightEdge() const { return right() + inset; }
    double bottomEdge() const { return bottom() + inset; }

    double left() const { return box.left(); }
    double right() const { return box.right(); }
    double top() const { return box.top(); }
    double bottom() const { return box.bottom(); }
    double width() const { return box.width(); }
    double height() const { return box.height(); }
    double x(double share) const { return left() + share * width(); }
    double y(double share) const { return top() + share * height(); }
    /// The ellipse across the full width between two heights.
    QRectF bowl(double from, double to) const {
        return {left(), y(from), width(), (to - from) * height()};
    }
};

QPainterPath zero(const Frame& f) {
    QPainterPath path;
    path.addRoundedRect(f.box, f.width() / 2, f.width() / 2);
    return path;
}

QPainterPath one(const Frame& f) {
    QPainterPath path({f.x(0.14), f.y(0.2)});
    path.lineTo(f.x(0.62), f.top());
    path.lineTo(f.x(0.62), f.bottomEdge());
    return path;
}

QPainterPath two(const Frame& f) {
    const QRectF bowl = f.bowl(0, 0.54);
    QPainterPath path;
    path.arcMoveTo(bowl, 168);
    path.arcTo(bowl, 168, -200);
    path.lineTo(f.left(), f.bottom());
    path.lineTo(f.rightEdge(), f.bottom());
    return path;
}

QPainterPath three(const Frame& f) {
    const QRectF upper = f.bowl(0, 0.48);
    const QRectF lower = f.bowl(0.48, 1);
    QPainterPath path;
    path.arcMoveTo(upper, 155);
    path.arcTo(upper, 155, -245);
    path.lineTo(f.x(0.3), f.y(0.48));
    path.arcMoveTo(lower, 90);
    path.arcTo(lower, 90, -245);
    return path;
}

QPainterPath four(const Frame& f) {
    QPainterPath path({f.x(0.72), f.bottomEdge()});
    path.lineTo(f.x(0.72), f.top());
    path.lineTo(f.left(), f.y(0.7));
    path.lineTo(f.rightEdge(), f.y(0.7));
    return path;
}

QPainterPath five(const Frame& f) {
    const QRectF bowl = f.bowl(0.38, 1);
    QPainterPath path({f.x(0.94), f.top()});
    path.lineTo(f.x(0.1), f.top());
    path.lineTo(f.x(0.06), f.y(0.46));
    path.arcTo(bowl, 130, -285);
    return path;
}

QPainterPath six(const Frame& f) {
    QPainterPath path;
    path.addEllipse(f.bowl(0.4, 1));
    path.moveTo(f.left(), f.y(0.7));
    path.cubicTo(f.left(), f.y(0.3), f.x(0.3), f.y(0.08), f.x(0.8), f.top());
    return path;
}

QPainterPath seven(const Frame& f) {
    QPainterPath path({f.leftEdge(), f.top()});
    path.lineTo(f.right(), f.top());
    path.lineTo(f.x(0.3), f.bottomEdge());
    return path;
}

QPainterPath eight(const Frame& f) {
    QPainterPath path;
    path.addEllipse(f.bowl(0, 0.47).adjusted(f.width() * 0.05, 0, -f.width() * 0.05, 0));
    path.addEllipse(f.bowl(0.47, 1));
    return path;
}

QPainterPath nine(const Frame& f) {
    const QPointF middle = f.box.center();
    const QTransform halfTurn = QTransform()
                                    .translate(middle.x(), middle.y())
                                    .rotate(180)
                                    .translate(-middle.x(), -middle.y());
    return halfTurn.map(six(f));
}

} // namespace

QPainterPath digitStrokes(int digit, const QRectF& box, double penWidth) {
    const double inset = penWidth / 2;
    const Frame frame{box.adjusted(inset, inset, -inset, -inset), inset};
    constexpr QPainterPath (*shapes[])(const Frame&){zero, one, two,   three, four,
                                                     five, six, seven, eight, nine};
    return shapes[digit](frame);
}

} // namespace tokwatch
