#pragma once

#include <QObject>
#include <qqmlregistration.h>

namespace tokwatch {

class AppModel;
class ViewClock;

/// The tab with token statistics, the chart of the reading window, and the calendar of the stored
/// days. References outlive it.
class StatsView : public QObject {
    Q_OBJECT
    QML_ANONYMOUS
  public:
    StatsView(AppModel& model, const ViewClock& clock);
};

} // namespace tokwatch
