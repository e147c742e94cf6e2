#include "Tokwatch/Desktop/PopoverWindow.h"

#include "KivoPanel/DisplayServer.h"
#include "Tokwatch/Desktop/PopoverController.h"

#include <QEvent>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickView>
#include <QScreen>

#include <algorithm>

namespace tokwatch {

PopoverWindow::PopoverWindow(QmlWindow& content) : qmlWindow(content) {
    connect(&qmlWindow, &QmlWindow::made, this, &PopoverWindow::prepare);
    connect(&qmlWindow, &QmlWindow::released, this, [this] { panel.reset(); });
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
        connect(root, &QQuickItem::implicitHeightChanged, this, [this] {
            if (onContentHeight) onContentHeight();
        });
        connect(root, SIGNAL(closeRequested()), this, SLOT(closeRequested()));
        isRounded = panel && kivo::isComposited();
        root->setProperty("isRounded", isRounded);
        qmlWindow.setTranslucent(isRounded);
    }
    connect(&window, &QWindow::widthChanged, this, &PopoverWindow::fitContent);
    connect(&window, &QWindow::heightChanged, this, &PopoverWindow::fitContent);
}

/// Whether the window is another one than is wanted by now.
bool PopoverWindow::isOutdated() const {
    if (qmlWindow.existing() == nullptr || isShown()) return false;
    return preparedStyle != style || (panel && isRounded != kivo::isComposited());
}

/// A compositor may give a window more than it asks for; lines that long are hard to read. The
/// height is given, too: the toolkit does that at changes of the window's size alone, and what
/// grows before its first one stays as high as it naturally is, with its footer out of sight.
void PopoverWindow::fitContent() {
    const QQuickView& window = *qmlWindow.existing();
    QQuickItem* root = window.rootObject();
    if (root == nullptr) return;
    const int width = std::min(window.width(), PopoverController::width);
    const int left = (window.width() - width) / 2; // on whole pixels
    root->setX(left);
    root->setSize(QSizeF(width, window.height()));
}

bool PopoverWindow::isShown() const {
    return qmlWindow.existing() != nullptr && qmlWindow.existing()->isVisible();
}

void PopoverWindow::show(QPoint anchor, int width, int height) {
    if (isOutdated()) qmlWindow.release();
    QQuickView& window = qmlWindow.window();
    if (panel) {
        panel->open(anchor, {width, height});
    } else {
        window.setMinimumSize({width, 240});
        window.setMaximumWidth(width);
        window.resize(width, height);
        window.show();
        window.raise();
        window.requestActivate();
    }
    fitContent();
}

void PopoverWindow::resize(int width, int height) {
    if (panel)
        panel->resize({width, height});
    else if (isShown())
        qmlWindow.existing()->resize(width, height);
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

double PopoverWindow::contentHeight() {
    const QQuickItem* root = qmlWindow.window().rootObject();
    return root == nullptr ? 0 : root->implicitHeight();
}

double PopoverWindow::visibleHeight(QPoint anchor) const {
    const QScreen* screen = QGuiApplication::screenAt(anchor);
    if (screen == nullptr) screen = QGuiApplication::primaryScreen();
    constexpr double anyScreen = 768;
    return screen == nullptr ? anyScreen : screen->availableGeometry().height();
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
