#pragma once

#include "ObservingUpdater.h"

#include <QObject>
#include <QString>
#include <qqmlregistration.h>

namespace tokwatch {

class AppModel;
class ViewClock;

/// What the popover says of the work in the background.
struct FooterState {
    Q_GADGET
    Q_PROPERTY(bool isIndexing MEMBER isIndexing)
    Q_PROPERTY(QString indexing MEMBER indexing)
    Q_PROPERTY(double indexedFraction MEMBER indexedFraction)
    Q_PROPERTY(bool isRefreshing MEMBER isRefreshing)
    Q_PROPERTY(QString updated MEMBER updated)
  public:
    bool isIndexing = false;
    QString indexing; ///< "Reading Claude: 12 MB of 300 MB"
    double indexedFraction = 0;
    bool isRefreshing = false;
    QString updated; ///< "Updated 5 min ago"
    friend bool operator==(const FooterState&, const FooterState&) = default;
};

/// The popover's lower edge. References outlive it.
class FooterView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(tokwatch::FooterState state READ state NOTIFY stateChanged)
  public:
    FooterView(AppModel& model, const ViewClock& clock);

    const FooterState& state() const { return current; }

  signals:
    void stateChanged();

  private:
    FooterState current;
    ObservingUpdater<FooterState> updater;
};

} // namespace tokwatch
