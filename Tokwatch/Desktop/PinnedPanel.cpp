#include "Tokwatch/Desktop/PinnedPanel.h"

#include "Tokwatch/DesktopPreferences/DesktopPreferences.h"

#include <QQuickItem>
#include <QQuickView>

#include <utility>

namespace tokwatch {

using Keyboard = kivo::FloatingPanel::Keyboard;

PinnedPanel::PinnedPanel(QmlRuntime& runtime, Scheduler& scheduler, QmlWindow::Content content,
                         DesktopPreferences& desktopPreferences, std::function<QPoint()> opensAt)
    : qmlWindow(runtime, scheduler, std::move(content)), preferences(desktopPreferences),
      anchor(std::move(opensAt)),
      pinNotifier(preferences.isPinned.addNotifier([this] { follow(); })) {
    connect(&qmlWindow, &QmlWindow::made, this, &PinnedPanel::prepare);
    connect(&qmlWindow, &QmlWindow::released, this, [this] { panel.reset(); });
    connect(&compositing, &kivo::Compositing::changed, this, &PinnedPanel::makeAnew);
}

void PinnedPanel::restore() {
    if (preferences.isPinned) open(Keyboard::stays);
}

void PinnedPanel::follow() {
    if (preferences.isPinned) return open(Keyboard::comes);
    if (!isShown()) return;
    panel->close();
    qmlWindow.letGo();
    if (onClosed) onClosed();
}

void PinnedPanel::open(Keyboard keyboard) {
    qmlWindow.window();
    panel->open(anchor(), naturalSize(), keyboard);
}

QSize PinnedPanel::naturalSize() {
    const QQuickItem* root = qmlWindow.existing()->rootObject();
    return root == nullptr ? QSize(1, 1)
                           : QSizeF(root->implicitWidth(), root->implicitHeight()).toSize();
}

void PinnedPanel::prepare() {
    QQuickView& window = *qmlWindow.existing();
    window.setTitle(QStringLiteral("Tokwatch Limits"));
    panel = std::make_unique<kivo::FloatingPanel>(window, preferences.panelFrames.value().frames);
    panel->onMoved = [this](const kivo::SavedFrames& frames) {
        preferences.panelFrames = PanelFrames{frames};
    };
    connect(panel.get(), &kivo::FloatingPanel::closeRequested, this, &PinnedPanel::unpin);
    QQuickItem* root = window.rootObject();
    if (root == nullptr) return;
    connect(root, &QQuickItem::implicitHeightChanged, this,
            [this] { panel->resize(naturalSize()); });
    connect(root, SIGNAL(closeRequested()), this, SLOT(unpin()));
    connect(root, SIGNAL(moveRequested()), this, SLOT(startMove()));
    root->setProperty("isRounded", compositing.isActive());
    qmlWindow.setTranslucent(compositing.isActive());
}

/// Whether a window is translucent is settled as it is made.
void PinnedPanel::makeAnew() {
    const bool wasShown = isShown();
    qmlWindow.release();
    if (wasShown) open(Keyboard::stays);
}

void PinnedPanel::unpin() {
    preferences.isPinned = false;
}

void PinnedPanel::startMove() {
    panel->startMove();
}

} // namespace tokwatch

#include "moc_PinnedPanel.cpp"
