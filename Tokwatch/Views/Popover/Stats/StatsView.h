#pragma once

#include "Tokwatch/Display/ObservingUpdater.h"
#include "Tokwatch/Views/Popover/Stats/ChartDays.h"
#include "Tokwatch/Views/Popover/Stats/HeatMapDays.h"

#include <QFutureWatcher>
#include <QObject>
#include <QProperty>
#include <qqmlregistration.h>

#include <optional>

namespace tokwatch {

class AppModel;
class ViewClock;

/// The token statistics.
struct StatTiles {
    Q_GADGET
    Q_PROPERTY(QString processed MEMBER processed)
    Q_PROPERTY(QString cachedInput MEMBER cachedInput)
    Q_PROPERTY(QString uncachedInput MEMBER uncachedInput)
    Q_PROPERTY(QString output MEMBER output)
    Q_PROPERTY(QString cacheSavings MEMBER cacheSavings)
  public:
    QString processed;
    QString cachedInput;
    QString uncachedInput;
    QString output;
    QString cacheSavings;
    friend bool operator==(const StatTiles&, const StatTiles&) = default;
};

/// What the tab shows of the reading window.
struct StatsState {
    Q_GADGET
    Q_PROPERTY(QString emptyText MEMBER emptyText)
    Q_PROPERTY(tokwatch::StatTiles tiles MEMBER tiles)
    Q_PROPERTY(tokwatch::ChartDays chart MEMBER chart)
  public:
    QString emptyText; ///< instead of all else; empty when there is something to show
    StatTiles tiles;
    ChartDays chart;
    friend bool operator==(const StatsState&, const StatsState&) = default;
};

/// The tab with token statistics, the chart of the reading window, and the calendar of the stored
/// days. Follows the model only while it is active. References outlive it. Main thread only.
class StatsView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(bool active READ isActive WRITE setActive)
    Q_PROPERTY(tokwatch::StatsState state READ state NOTIFY stateChanged)
    Q_PROPERTY(tokwatch::HeatMapDays calendar READ calendar NOTIFY calendarChanged)
  public:
    StatsView(AppModel& model, const ViewClock& clock);

    bool isActive() const { return updates.has_value(); }
    /// Brings `state` up to date at once, and the calendar as soon as its summary is computed.
    void setActive(bool active);

    const StatsState& state() const { return currentState.value(); }
    const HeatMapDays& calendar() const { return currentCalendar.value(); }

  signals:
    void stateChanged();
    void calendarChanged();

  private:
    /// What happens while the tab is active.
    struct Updates {
        explicit Updates(StatsView& view);
        ObservingUpdater<StatsState> state;
        ObservingUpdater<HeatMapDays> calendar;
        QPropertyNotifier publishing;
    };
    StatsState computeState() const;
    HeatMapDays computeCalendar() const;
    void readStoredDays();
    void takeStoredDays();

    AppModel& model;
    Q_OBJECT_BINDABLE_PROPERTY(StatsView, StatsState, currentState, &StatsView::stateChanged)
    Q_OBJECT_BINDABLE_PROPERTY(StatsView, HeatMapDays, currentCalendar, &StatsView::calendarChanged)
    QProperty<UsageSummary> storedDays; ///< covers no day until it was computed
    QFutureWatcher<UsageSummary> reading;
    bool isOutdated = false; ///< something was published since the reading began
    std::optional<Updates> updates;
};

} // namespace tokwatch
