#pragma once

#include "Tokwatch/Desktop/ContextMenuWindow.h"
#include "Tokwatch/Display/ObservingUpdater.h"
#include "Tokwatch/StatusItem/MeterStatusItem.h"

#include <QPoint>

#include <functional>
#include <memory>

namespace tokwatch {

class AppModel;
class Preferences;

/// What of the program is in the status area: the item, with the title that follows model,
/// preferences and time, and its menu where the area leaves that to the item. Main thread only.
class StatusSurface {
  public:
    /// How long a title may be out of date when nothing but time changes it.
    static constexpr Seconds titleInterval{30};

    /// Where the title comes from. References outlive the surface.
    struct Sources {
        AppModel& model;
        const Preferences& preferences;
    };

    /// References outlive it.
    StatusSurface(StatusItemSurroundings surroundings, QmlRuntime& runtime, Sources sources,
                  const StatusActions& actions);

    /// Shows the title, from now on whenever it is another one.
    void showTitle();

    MeterStatusItem& item() { return statusItem; }
    const MeterStatusItem& item() const { return statusItem; }
    void openMenu(QPoint at) { contextMenu.open(at); }

  private:
    Scheduler& scheduler;
    std::function<StatusContent()> currentTitle;
    MeterStatusItem statusItem;
    ContextMenuWindow contextMenu;
    ObservingUpdater<StatusContent> titleObserver;
    std::unique_ptr<ScheduledCall> titleTimer;
};

} // namespace tokwatch
