#pragma once

#include "Tokwatch/Display/ObservingUpdater.h"
#include "Tokwatch/Views/Popover/Range/FollowedSummary.h"
#include "Tokwatch/Views/Popover/Range/ShownRange.h"
#include "Tokwatch/Views/Popover/Stats/ChartDays.h"
#include "Tokwatch/Views/Popover/Stats/HeatMapDays.h"

#include <QColor>
#include <QImage>
#include <QObject>
#include <QProperty>
#include <qqmlregistration.h>

#include <optional>

namespace tokwatch {

class AppModel;

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

/// What the tab shows of the chosen days.
struct StatsState {
    Q_GADGET
    Q_PROPERTY(bool hasCalendar MEMBER hasCalendar)
    Q_PROPERTY(QString emptyText MEMBER emptyText)
    Q_PROPERTY(tokwatch::StatTiles tiles MEMBER tiles)
    Q_PROPERTY(tokwatch::ChartDays chart MEMBER chart)
  public:
    QString emptyText;        ///< instead of tiles and chart; empty when there is something to show
    bool hasCalendar = false; ///< there is something to show of the stored days
    StatTiles tiles;
    ChartDays chart;
    friend bool operator==(const StatsState&, const StatsState&) = default;
};

/// The tab with token statistics, the chart of the chosen days, and the calendar of the stored
/// days. Follows the model only while it is active. References outlive it. Main thread only.
class StatsView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(bool active READ isActive WRITE setActive)
    Q_PROPERTY(tokwatch::ShownRange* range READ range CONSTANT)
    Q_PROPERTY(tokwatch::StatsState state READ state NOTIFY stateChanged)
    Q_PROPERTY(tokwatch::HeatMapDays calendar READ calendar NOTIFY calendarChanged)
    Q_PROPERTY(tokwatch::ReadingState reading READ reading NOTIFY readingChanged)
  public:
    StatsView(AppModel& model, ShownRange& range, FollowedSummary& summary);

    bool isActive() const { return updates.has_value(); }
    /// Brings `state` up to date at once, and the calendar as soon as its summary is computed.
    void setActive(bool active);
    ShownRange* range() const { return &shownRange; }

    const StatsState& state() const { return currentState.value(); }
    const HeatMapDays& calendar() const { return currentCalendar.value(); }
    const ReadingState& reading() const { return currentReading.value(); }

    /// Puts a picture of what the tab shows into the clipboard, on a background of this colour.
    Q_INVOKABLE static void copyPicture(const QImage& picture, const QColor& background);

  signals:
    void stateChanged();
    void calendarChanged();
    void readingChanged();

  private:
    /// What happens while the tab is active.
    struct Updates {
        explicit Updates(StatsView& view);
        FollowedSummary::Look lookAtSummary;
        FollowedSummary::Look lookAtStored;
        ObservingUpdater<StatsState> state;
        ObservingUpdater<HeatMapDays> calendar;
        ObservingUpdater<ReadingState> reading;
    };
    StatsState computeState() const;
    HeatMapDays computeCalendar() const;

    AppModel& model;
    ShownRange& shownRange;
    FollowedSummary& summary; ///< of the chosen days
    FollowedSummary stored;
    Q_OBJECT_BINDABLE_PROPERTY(StatsView, StatsState, currentState, &StatsView::stateChanged)
    Q_OBJECT_BINDABLE_PROPERTY(StatsView, HeatMapDays, currentCalendar, &StatsView::calendarChanged)
    Q_OBJECT_BINDABLE_PROPERTY(StatsView, ReadingState, currentReading, &StatsView::readingChanged)
    std::optional<Updates> updates;
};

} // namespace tokwatch
