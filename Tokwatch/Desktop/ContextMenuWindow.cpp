#include "Tokwatch/Desktop/ContextMenuWindow.h"

#include "KivoPanel/DisplayServer.h"
#include "Tokwatch/Views/Menu/MenuView.h"

#include <QQuickItem>
#include <QQuickView>

namespace tokwatch {

ContextMenuWindow::ContextMenuWindow(QmlRuntime& runtime, Scheduler& scheduler,
                                     kivo::DBusMenu::Builder build)
    : qmlWindow(runtime, scheduler,
                {QUrl(QStringLiteral("qrc:/qt/qml/Tokwatch/Menu/ContextMenu.qml")),
                 [build = std::move(build)] { return std::make_unique<MenuView>(build()); }}) {
    connect(&qmlWindow, &QmlWindow::made, this, &ContextMenuWindow::prepare);
    connect(&qmlWindow, &QmlWindow::released, this, [this] { panel.reset(); });
}

void ContextMenuWindow::open(QPoint anchor) {
    qmlWindow.release(); // what the menu offers may have changed
    QQuickView& window = qmlWindow.window();
    const QQuickItem* root = window.rootObject();
    if (root == nullptr) return;
    panel->open(anchor, QSizeF(root->implicitWidth(), root->implicitHeight()).toSize());
}

void ContextMenuWindow::prepare() {
    qmlWindow.existing()->setTitle(QStringLiteral("Tokwatch"));
    panel = std::make_unique<kivo::PopupPanel>(*qmlWindow.existing());
    connect(panel.get(), &kivo::PopupPanel::closed, this, [this] { qmlWindow.letGo(); });
    QQuickItem* root = qmlWindow.existing()->rootObject();
    if (root == nullptr) return;
    connect(root, SIGNAL(closeRequested()), this, SLOT(close()));
    const bool isRounded = kivo::isComposited();
    root->setProperty("isRounded", isRounded);
    qmlWindow.setTranslucent(isRounded);
}

void ContextMenuWindow::close() {
    if (panel) panel->close();
}

} // namespace tokwatch

#include "moc_ContextMenuWindow.cpp"
