#include "Tokwatch/Widget/WidgetWindow.h"

#include <QAccessibleObject>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleHints>
#include <QSurfaceFormat>

#include <chrono>

namespace tokwatch {
namespace {

/// A window manager that moves the window tells each step of the way.
constexpr std::chrono::milliseconds settleTime{400};
/// A surface is at its next place some frames after it was sent there.
constexpr std::chrono::milliseconds surfaceTime{100};

using Dragging = kivo::DesktopWindow::Dragging;

QString nameOfWindow() {
    return QStringLiteral("Tokwatch");
}

/// Also where corners are not left out yet: a window has its format from the start.
QWindow& translucent(QWindow& window) {
    QSurfaceFormat format = window.format();
    format.setAlphaBufferSize(8);
    window.setFormat(format);
    return window;
}

class WidgetAccessible : public QAccessibleObject {
  public:
    using QAccessibleObject::QAccessibleObject;

    QAccessible::Role role() const override { return QAccessible::Window; }
    QAccessible::State state() const override { return {}; }
    QString text(QAccessible::Text which) const override {
        if (which == QAccessible::Name) return nameOfWindow();
        if (which != QAccessible::Description) return {};
        return QString::fromStdString(static_cast<const WidgetWindow*>(object())->spoken());
    }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(qApp);
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
};

QAccessibleInterface* accessibleOf(const QString&, QObject* object) {
    return qobject_cast<WidgetWindow*>(object) != nullptr ? new WidgetAccessible(object) : nullptr;
}

} // namespace

WidgetWindow::WidgetWindow(const WidgetLooks& looks)
    : drawnWith(looks), desktop(translucent(*this)) {
    setTitle(nameOfWindow());
    QAccessible::installFactory(accessibleOf);
    settling.setSingleShot(true);
    settling.setInterval(settleTime);
    connect(&settling, &QTimer::timeout, this, &WidgetWindow::tellIfMoved);
}

void WidgetWindow::present(const WidgetDisplay& display) {
    if (display == shown) return;
    shown = display;
    update();
    if (!QAccessible::isActive()) return;
    QAccessibleEvent changed(this, QAccessible::DescriptionChanged);
    QAccessible::updateAccessibility(&changed);
}

void WidgetWindow::setLooks(const WidgetLooks& looks) {
    if (looks == drawnWith) return;
    drawnWith = looks;
    update();
}

void WidgetWindow::setPlace(const QRect& next) {
    if (standIn) {
        standIn.reset();
        grip.reset();
        update();
    }
    restingPlace = next;
    desktop.setPlace(next);
}

QAccessibleInterface* WidgetWindow::accessibleRoot() const {
    return QAccessible::queryAccessibleInterface(const_cast<WidgetWindow*>(this));
}

void WidgetWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(QRect(QPoint(), size()), Qt::transparent);
    if (standIn && standIn->isExposed()) return;
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    paintWidget(painter, shown, drawnWith);
}

void WidgetWindow::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    grip = event->position().toPoint();
    isDragged = false;
}

void WidgetWindow::mouseMoveEvent(QMouseEvent* event) {
    if (!grip) return;
    const QPoint way = event->position().toPoint() - *grip;
    if (!isDragged && way.manhattanLength() < QGuiApplication::styleHints()->startDragDistance())
        return;
    isDragged = true;
    switch (desktop.dragging()) {
    case Dragging::itself:
        return setPosition(event->globalPosition().toPoint() - *grip);
    case Dragging::standIn:
        return carry(way);
    case Dragging::byCompositor:
        // It takes the pointer until that is let go.
        grip.reset();
        startSystemMove();
    }
}

void WidgetWindow::carry(QPoint way) {
    if (!standIn) {
        standIn = std::make_unique<WidgetWindow>(drawnWith);
        standIn->setFlag(Qt::WindowTransparentForInput);
        standIn->present(shown);
        standIn->setPlace(restingPlace);
        standIn->show();
    }
    standIn->setPlace(restingPlace.translated(way));
    update();
}

void WidgetWindow::putDown() {
    WidgetWindow* const last = standIn.release();
    setPlace(last->place());
    update();
    QTimer::singleShot(surfaceTime, last, &QObject::deleteLater);
    emit moved();
}

void WidgetWindow::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::RightButton)
        return emit menuRequested(event->globalPosition().toPoint());
    if (event->button() != Qt::LeftButton || !grip) return;
    grip.reset();
    if (!isDragged) return emit clicked();
    isDragged = false;
    standIn ? putDown() : tellIfMoved();
}

void WidgetWindow::moveEvent(QMoveEvent*) {
    if (!grip && desktop.dragging() == Dragging::itself) settling.start();
}

void WidgetWindow::tellIfMoved() {
    settling.stop();
    if (grip || geometry() == restingPlace) return;
    restingPlace = geometry();
    emit moved();
}

} // namespace tokwatch

#include "moc_WidgetWindow.cpp"
