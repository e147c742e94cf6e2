#pragma once

#include <QObject>
#include <qqmlregistration.h>

namespace tokwatch {

class AppModel;
class ViewClock;

/// The tab with the ranked breakdown by model or by day. References outlive it.
class ModelsView : public QObject {
    Q_OBJECT
    QML_ANONYMOUS
  public:
    ModelsView(AppModel& model, const ViewClock& clock);
};

} // namespace tokwatch
