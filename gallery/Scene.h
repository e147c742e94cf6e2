#pragma once

#include "KivoLooks/Palette.h"
#include "gallery/DemoWorld.h"

#include <QImage>
#include <QObject>
#include <QSize>
#include <QString>
#include <QUrl>

#include <functional>
#include <memory>
#include <vector>

class QQuickItem;

namespace tokwatch::testing {

/// One picture: what it shows, of what world.
struct Scene {
    QString name;
    QUrl source;
    DemoWorld::Home home = DemoWorld::Home::demo;
    /// Brings the world into the state that is shown.
    std::function<void(DemoWorld&)> prepare;
    std::function<std::unique_ptr<QObject>(DemoWorld&)> makeView;
    /// Looked at, once it is there: hovers, scrolls.
    std::function<void(QQuickItem& root)> touch;
    /// The window; the height follows the content when it is 0, up to what a laptop's screen
    /// leaves.
    QSize size{420, 0};
    /// What is no window of QML is drawn by this alone.
    std::function<QImage(DemoWorld&, const kivo::Appearance&)> draw{};
};

std::vector<Scene> popoverScenes();
/// Of the settings and the welcome.
std::vector<Scene> windowScenes();
/// Of the widget on the desktop.
std::vector<Scene> widgetScenes();
/// All that a picture is kept of.
std::vector<Scene> allScenes();

} // namespace tokwatch::testing
