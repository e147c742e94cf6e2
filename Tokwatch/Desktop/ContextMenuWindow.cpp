#include "Tokwatch/Desktop/ContextMenuWindow.h"

#include "KivoPanel/DisplayServer.h"
#include "Tokwatch/Views/Menu/MenuView.h"

#include <QQuickItem>
#include <QQuickView>

namespace tokwatch {

ContextMenuWindow::ContextMenuWindow(QmlRuntime& runtime, Scheduler& scheduler,
                                     kivo::DBusMenu::Builder build)
    : hosted(runtime, scheduler,
             {QUrl(QStringLiteral("qrc:/qt/qml/Tokwatch/Menu/ContextMenu.qml")),
              [build = std::move(build)] { return std::make_unique<MenuView>(build()); }}) {
    connect(&hosted, &HostedWindow::made, this, &ContextMenuWindow::prepare);
    connect(&hosted, &HostedWindow::released, this, [this] { panel.reset(); });
}

void ContextMenuWindow::open(QPoint anchor) {
    hosted.release(); // what the menu offers may have changed
    QQuickView& window = hosted.window();
    const QQuickItem* root = window.rootObject();
    if (root == nullptr) return;
    panel->open(anchor, QSizeF(root->implicitWidth(), root->implicitHeight()).toSize());
}

void ContextMenuWindow::prepare() {
    hosted.existing()->setTitle(QStringLiteral("Tokwatch"));
    panel = std::make_unique<kivo::PopupPanel>(*hosted.existing());
    connect(panel.get(), &kivo::PopupPanel::closed, this, [this] { hosted.letGo(); });
    QQuickItem* root = hosted.existing()->rootObject();
    if (root == nullptr) return;
    connect(root, SIGNAL(closeRequested()), this, SLOT(close()));
    const bool isRounded = kivo::isComposited();
    root->setProperty("isRounded", isRounded);
    hosted.setTranslucent(isRounded);
}

void ContextMenuWindow::close() {
    if (panel) panel->close();
}

} // namespace tokwatch
