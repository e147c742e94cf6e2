#include "Tokwatch/Widget/WidgetWindow.h"

#include "KivoPanel/DesktopWindow.h"

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

QString nameOfWindow() {
    return QStringLiteral("Tokwatch");
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

WidgetWindow::WidgetWindow(const WidgetLooks& looks) : drawnWith(looks) {
    setTitle(nameOfWindow());
    if (looks.isRounded) {
        QSurfaceFormat translucent = format();
        translucent.setAlphaBufferSize(8);
        setFormat(translucent);
    }
    QAccessible::installFactory(accessibleOf);
    kivo::putOnDesktop(*this);
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
    restingPlace = next;
    setMinimumSize(next.size());
    setMaximumSize(next.size());
    setGeometry(next);
}

QAccessibleInterface* WidgetWindow::accessibleRoot() const {
    return QAccessible::queryAccessibleInterface(const_cast<WidgetWindow*>(this));
}

void WidgetWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(QRect(QPoint(), size()), Qt::transparent);
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
    // A compositor moves its windows itself, and takes the pointer until it is let go.
    if (QGuiApplication::platformName().startsWith(QLatin1String("wayland"))) {
        grip.reset();
        startSystemMove();
        return;
    }
    setPosition(event->globalPosition().toPoint() - *grip);
}

void WidgetWindow::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::RightButton)
        return emit menuRequested(event->globalPosition().toPoint());
    if (event->button() != Qt::LeftButton || !grip) return;
    grip.reset();
    if (!isDragged) return emit clicked();
    isDragged = false;
    tellIfMoved();
}

void WidgetWindow::moveEvent(QMoveEvent*) {
    if (!grip) settling.start();
}

void WidgetWindow::tellIfMoved() {
    settling.stop();
    if (grip || geometry() == restingPlace) return;
    restingPlace = geometry();
    emit moved();
}

} // namespace tokwatch

#include "moc_WidgetWindow.cpp"
