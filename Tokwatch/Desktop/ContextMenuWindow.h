#pragma once

#include "KivoMenuBar/DBusMenu.h"
#include "KivoPanel/PopupPanel.h"
#include "Tokwatch/Desktop/QmlWindow.h"

#include <QObject>
#include <QPoint>

#include <memory>
#include <vector>

namespace tokwatch {

/// The status item's menu as a window of ours, for status areas that leave it to the item. Main
/// thread only.
class ContextMenuWindow : public QObject {
    Q_OBJECT
  public:
    /// References outlive it.
    ContextMenuWindow(QmlRuntime& runtime, Scheduler& scheduler, kivo::DBusMenu::Builder build);

    void open(QPoint anchor);

  private slots:
    void close();

  private:
    void prepare();

    std::unique_ptr<kivo::PopupPanel> panel; ///< outlives the window, whose end ends it
    QmlWindow qmlWindow;
};

} // namespace tokwatch
