#pragma once

#include "Tokwatch/App/AppModel.h"
#include "TokwatchCore/Store/Pruning.h"

#include <QObject>
#include <QProperty>
#include <qqmlregistration.h>

namespace tokwatch {

/// How many days, up to today, the tabs tell of: one choice for all of them. It lasts as long as
/// the program and is no setting, so that a new start shows the usual days. Main thread only.
class ShownRange : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(Days days READ days WRITE setDays NOTIFY daysChanged)
  public:
    enum Days {
        Today = 1,
        Week = 7,
        Month = AppModel::readingDays,
        Quarter = keptDays,
    };
    Q_ENUM(Days)

    /// Observable.
    Days days() const { return chosen.value(); }
    void setDays(Days next) { chosen = next; }
    QBindable<Days> bindableDays() { return &chosen; }

  signals:
    void daysChanged();

  private:
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(ShownRange, Days, chosen, Month, &ShownRange::daysChanged)
};

} // namespace tokwatch
