#pragma once

#include "Tokwatch/Display/ObservingUpdater.h"
#include "Tokwatch/Views/Common/Segment.h"

#include <QObject>
#include <QProperty>
#include <QString>
#include <qqmlregistration.h>

namespace tokwatch {

class WidgetPreferences;

struct WidgetState {
    Q_GADGET
    Q_PROPERTY(bool shown MEMBER shown)
    Q_PROPERTY(tokwatch::Segment::Size size MEMBER size)
    Q_PROPERTY(QString place MEMBER place)
  public:
    bool shown = false;
    Segment::Size size = Segment::Medium;
    QString place; ///< where it lies, as a sentence; empty while that is not known
    friend bool operator==(const WidgetState&, const WidgetState&) = default;
};

/// The page "Widget". References outlive it.
class WidgetView : public QObject {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(tokwatch::WidgetState state READ state NOTIFY stateChanged)
  public:
    explicit WidgetView(WidgetPreferences& preferences);

    const WidgetState& state() const { return current.value(); }

    Q_INVOKABLE void setShown(bool isShown);
    Q_INVOKABLE void setSize(tokwatch::Segment::Size size);

  signals:
    void stateChanged();

  private:
    WidgetPreferences& preferences;
    Q_OBJECT_BINDABLE_PROPERTY(WidgetView, WidgetState, current, &WidgetView::stateChanged)
    ObservingUpdater<WidgetState> updater;
};

} // namespace tokwatch
