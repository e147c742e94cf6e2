#pragma once

#include "Tokwatch/Display/ObservingUpdater.h"
#include "Tokwatch/Views/Common/Segment.h"
#include "Tokwatch/Views/Popover/Models/BreakdownModel.h"
#include "Tokwatch/Views/Popover/Models/ProjectReading.h"
#include "Tokwatch/Views/Popover/Range/FollowedSummary.h"
#include "Tokwatch/Views/Popover/Range/ShownRange.h"

#include <QObject>
#include <QProperty>
#include <QString>
#include <qqmlregistration.h>

#include <optional>

namespace tokwatch {

class AppModel;

/// What the tab shows beside its rows.
struct ModelsState {
    Q_GADGET
    Q_PROPERTY(QString emptyText MEMBER emptyText)
    Q_PROPERTY(QString notes MEMBER notes)
    Q_PROPERTY(bool isWaiting MEMBER isWaiting)
  public:
    QString emptyText;      ///< instead of rows; empty when there are some
    QString notes;          ///< what the numbers leave out or guess; empty when nothing
    bool isWaiting = false; ///< there are no rows yet
    friend bool operator==(const ModelsState&, const ModelsState&) = default;
};

/// The tab with the ranked breakdown by model, day or project. Follows the model only while it is
/// active. References outlive it. Main thread only.
class ModelsView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(bool active READ isActive WRITE setActive)
    Q_PROPERTY(bool inSight READ isInSight WRITE setInSight)
    Q_PROPERTY(tokwatch::Segment::Breakdown mode READ mode WRITE setMode NOTIFY modeChanged)
    Q_PROPERTY(tokwatch::ShownRange* range READ range CONSTANT)
    Q_PROPERTY(tokwatch::BreakdownModel* rows READ rows CONSTANT)
    Q_PROPERTY(tokwatch::ModelsState state READ state NOTIFY stateChanged)
    Q_PROPERTY(tokwatch::ReadingState reading READ reading NOTIFY readingChanged)
  public:
    ModelsView(AppModel& model, ShownRange& range, FollowedSummary& summary);

    bool isActive() const { return updates.has_value(); }
    /// Brings the rows up to date at once, those of projects as soon as they are read.
    void setActive(bool active);
    /// Whether the window is shown: nobody waits for projects in one that was closed.
    bool isInSight() const { return inSight; }
    void setInSight(bool isInSight);

    Segment::Breakdown mode() const { return breakdownMode.value(); }
    void setMode(Segment::Breakdown mode);
    ShownRange* range() const { return &shownRange; }

    BreakdownModel* rows() { return &rowModel; }
    const ModelsState& state() const { return currentState.value(); }
    const ReadingState& reading() const { return currentReading.value(); }

    /// The whole table as it is ordered here.
    QString asText() const;
    QString asCSV() const;
    Q_INVOKABLE void copyText() const;
    Q_INVOKABLE void copyCSV() const;
    Q_INVOKABLE void pasteText() { emit pasteRequested(asText()); }

  signals:
    void modeChanged();
    void stateChanged();
    void readingChanged();
    /// Where the keyboard was before the window had it.
    void pasteRequested(const QString& text);

  private:
    struct Shown {
        BreakdownPointer breakdown;
        ModelsState state;
    };
    /// What happens while the tab is active.
    struct Updates {
        explicit Updates(ModelsView& view);
        FollowedSummary::Look look;
        ObservingUpdater<Shown> shown;
        ObservingUpdater<ReadingState> reading;
    };
    BreakdownPointer breakdown() const;
    Shown compute() const;
    Shown computeProjects() const;
    void show(Shown next);
    void followProjects();

    AppModel& model;
    ShownRange& shownRange;
    FollowedSummary& summary;
    ProjectReading projects;
    BreakdownModel rowModel;
    bool inSight = false;
    Q_OBJECT_BINDABLE_PROPERTY(ModelsView, ModelsState, currentState, &ModelsView::stateChanged)
    Q_OBJECT_BINDABLE_PROPERTY(ModelsView, ReadingState, currentReading,
                               &ModelsView::readingChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(ModelsView, Segment::Breakdown, breakdownMode,
                                         Segment::ByModel, &ModelsView::modeChanged)
    QPropertyNotifier rangeNotifier;
    std::optional<Updates> updates;
};

} // namespace tokwatch
