#include "Tokwatch/Desktop/PopoverWindow.h"

#include <QEvent>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickView>
#include <QScreen>

#include <algorithm>
#include <cmath>

namespace tokwatch {
namespace {

/// Less what bars take.
double screenHeightAt(QPoint anchor) {
    const QScreen* screen = QGuiApplication::screenAt(anchor);
    if (screen == nullptr) screen = QGuiApplication::primaryScreen();
    constexpr double anyScreen = 768;
    return screen == nullptr ? anyScreen : screen->availableGeometry().height();
}

} // namespace

PopoverWindow::PopoverWindow(QmlWindow& content) : qmlWindow(content) {
    connect(&qmlWindow, &QmlWindow::made, this, &PopoverWindow::prepare);
    connect(&qmlWindow, &QmlWindow::released, this, [this] { panel.reset(); });
    connect(&compositing, &kivo::Compositing::changed, this, &PopoverWindow::squareCorners);
}

void PopoverWindow::setStyle(Style next) {
    style = next;
}

void PopoverWindow::prepare() {
    QQuickView& window = *qmlWindow.existing();
    window.setTitle(QStringLiteral("Tokwatch"));
    preparedStyle = style;
    if (style == Style::popup) {
        panel = std::make_unique<kivo::PopupPanel>(window);
        connect(panel.get(), &kivo::PopupPanel::closed, this, &PopoverWindow::wasClosed);
        panel->onPressElsewhere = onPressElsewhere;
    } else {
        window.installEventFilter(this);
    }
    if (QQuickItem* root = window.rootObject()) {
        connect(root, &QQuickItem::implicitHeightChanged, this, &PopoverWindow::resize);
        connect(root, SIGNAL(closeRequested()), this, SLOT(closeRequested()));
        isRounded = panel && compositing.isActive();
        root->setProperty("isRounded", isRounded);
        qmlWindow.setTranslucent(isRounded);
    }
    connect(&window, &QWindow::widthChanged, this, &PopoverWindow::fitContent);
    connect(&window, &QWindow::heightChanged, this, &PopoverWindow::fitContent);
}

/// Whether the window is another one than is wanted by now.
bool PopoverWindow::isOutdated() const {
    if (qmlWindow.existing() == nullptr || isShown()) return false;
    return preparedStyle != style || (panel && isRounded != compositing.isActive());
}

/// Round ones would be black. They come back with the next window, which is another one then.
void PopoverWindow::squareCorners() {
    if (compositing.isActive() || !isRounded || qmlWindow.existing() == nullptr) return;
    isRounded = false;
    if (QQuickItem* root = qmlWindow.existing()->rootObject())
        root->setProperty("isRounded", false);
    qmlWindow.setTranslucent(false);
}

/// A compositor may give a window more than it asks for; lines that long are hard to read. The
/// height is given, too: the toolkit does that at changes of the window's size alone, and what
/// grows before its first one stays as high as it naturally is, with its footer out of sight.
void PopoverWindow::fitContent() {
    const QQuickView& window = *qmlWindow.existing();
    QQuickItem* root = window.rootObject();
    if (root == nullptr) return;
    const int taken = std::min(window.width(), width);
    const int left = (window.width() - taken) / 2; // on whole pixels
    root->setX(left);
    root->setSize(QSizeF(taken, window.height()));
}

bool PopoverWindow::isShown() const {
    return qmlWindow.existing() != nullptr && qmlWindow.existing()->isVisible();
}

/// As much as it may take where its content is not known.
QSize PopoverWindow::size() const {
    const QQuickItem* root = qmlWindow.existing()->rootObject();
    const double natural = root == nullptr ? 0 : std::ceil(root->implicitHeight());
    const double most = std::floor(heightShare * screenHeightAt(shownAt));
    return {width, static_cast<int>(natural > 0 ? std::min(most, natural) : most)};
}

void PopoverWindow::show(QPoint anchor) {
    if (isOutdated()) qmlWindow.release();
    QQuickView& window = qmlWindow.window();
    shownAt = anchor;
    if (panel) {
        panel->open(anchor, size());
    } else {
        window.setMinimumSize({width, 240});
        window.setMaximumWidth(width);
        window.resize(size());
        window.show();
        window.raise();
        window.requestActivate();
    }
    fitContent();
}

void PopoverWindow::resize() {
    if (!isShown()) return;
    if (panel)
        panel->resize(size());
    else
        qmlWindow.existing()->resize(size());
}

void PopoverWindow::close() {
    if (!isShown()) return;
    if (panel) return panel->close();
    qmlWindow.existing()->hide();
    wasClosed();
}

void PopoverWindow::wasClosed() {
    // Opened anew, no control has the keyboard, and none shows that it has.
    if (const QQuickItem* root = qmlWindow.existing()->rootObject())
        if (QQuickItem* focused = root->scopedFocusItem()) focused->setFocus(false);
    qmlWindow.letGo();
    if (onClosed) onClosed();
}

bool PopoverWindow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Close && watched == qmlWindow.existing()) {
        // Hidden instead, so that it reopens at once. Not refused: that would stop the program's
        // end.
        close();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace tokwatch

#include "moc_PopoverWindow.cpp"
