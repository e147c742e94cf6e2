#include "Tokwatch/Desktop/ContentWindow.h"

#include <QEvent>
#include <QQuickItem>
#include <QQuickView>
#include <QScreen>

#include <cmath>
#include <utility>

namespace tokwatch {

ContentWindow::ContentWindow(QmlRuntime& runtime, Scheduler& scheduler, QmlWindow::Content content,
                             Frame windowFrame)
    : qmlWindow(runtime, scheduler, std::move(content)), frame(std::move(windowFrame)) {
    connect(&qmlWindow, &QmlWindow::made, this, &ContentWindow::prepare);
}

void ContentWindow::prepare() {
    QQuickView& window = *qmlWindow.existing();
    window.setTitle(frame.title);
    fit();
    // What is in it is laid out with the first frame.
    if (frame.size.height() == 0 && window.rootObject() != nullptr)
        connect(window.rootObject(), &QQuickItem::implicitHeightChanged, this, &ContentWindow::fit);
    window.installEventFilter(this);
    connect(qmlWindow.view(), SIGNAL(closeRequested()), this, SLOT(close()));
}

void ContentWindow::fit() {
    QQuickView& window = *qmlWindow.existing();
    constexpr QSize titleBar{0, 32};
    const QSize room = window.screen()->availableSize() - titleBar;
    QSize wanted = frame.size;
    if (wanted.height() == 0 && window.rootObject() != nullptr)
        wanted.setHeight(static_cast<int>(std::ceil(window.rootObject()->implicitHeight())));
    const QSize size = wanted.boundedTo(room);
    window.setMinimumSize(frame.minimum.isEmpty() ? size : frame.minimum.boundedTo(room));
    if (frame.minimum.isEmpty()) window.setMaximumSize(size);
    window.resize(size);
}

void ContentWindow::open() {
    QQuickView& window = qmlWindow.window();
    window.show();
    window.raise();
    window.requestActivate();
}

void ContentWindow::close() {
    if (qmlWindow.existing() == nullptr || !qmlWindow.existing()->isVisible()) return;
    qmlWindow.existing()->hide();
    qmlWindow.letGo();
    emit closed();
}

bool ContentWindow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Close && watched == qmlWindow.existing()) {
        // Hidden instead, so that it reopens at once. Not refused: that would stop the program's
        // end.
        close();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace tokwatch

#include "moc_ContentWindow.cpp"
