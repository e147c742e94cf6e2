#include "Tokwatch/Desktop/StatusSurface.h"

#include "Tokwatch/App/AppModel.h"
#include "Tokwatch/Display/RunOuts.h"
#include "Tokwatch/Preferences/Preferences.h"

#include <utility>

namespace tokwatch {

StatusSurface::StatusSurface(StatusItemSurroundings surroundings, QmlRuntime& runtime,
                             Sources sources, const StatusActions& actions)
    : scheduler(surroundings.scheduler), currentTitle([sources] {
          const AppModel& model = sources.model;
          const Date present = model.now();
          return statusContent(sources.preferences.plain(), model.limits(), present,
                               RunOuts(model.limits(), model.samples(), present, model.calendar()));
      }),
      statusItem(std::move(surroundings), actions),
      contextMenu(runtime, scheduler, [actions] { return statusMenu(actions); }),
      titleObserver(currentTitle, [this](const StatusContent& next) { statusItem.apply(next); }) {
    statusItem.onContextMenu = [this](QPoint at) { openMenu(at); };
}

void StatusSurface::showTitle() {
    titleObserver.arm();
    titleTimer = scheduler.every(titleInterval, [this] { statusItem.apply(currentTitle()); });
}

} // namespace tokwatch
