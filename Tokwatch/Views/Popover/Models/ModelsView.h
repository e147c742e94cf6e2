#pragma once

#include "Tokwatch/Display/ObservingUpdater.h"
#include "Tokwatch/Views/Common/Segment.h"
#include "Tokwatch/Views/Popover/Models/Breakdown.h"

#include <QObject>
#include <QProperty>
#include <QString>
#include <qqmlregistration.h>

#include <optional>

namespace tokwatch {

class AppModel;
class ViewClock;

/// The tab with the ranked breakdown by model or by day. Follows the model only while it is active.
/// References outlive it. Main thread only.
class ModelsView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(bool active READ isActive WRITE setActive)
    Q_PROPERTY(tokwatch::Segment::Breakdown mode READ mode WRITE setMode NOTIFY modeChanged)
    Q_PROPERTY(tokwatch::BreakdownModel* rows READ rows CONSTANT)
    Q_PROPERTY(QString emptyText READ emptyText NOTIFY textsChanged)
    Q_PROPERTY(QString notes READ notes NOTIFY textsChanged)
  public:
    ModelsView(AppModel& model, const ViewClock& clock);

    bool isActive() const { return updater.has_value(); }
    /// Brings the rows up to date at once.
    void setActive(bool active);

    Segment::Breakdown mode() const {
        return static_cast<Segment::Breakdown>(breakdownMode.value());
    }
    void setMode(Segment::Breakdown mode) { breakdownMode = static_cast<BreakdownMode>(mode); }

    BreakdownModel* rows() { return &rowModel; }
    /// Instead of rows; empty when there are some.
    const QString& emptyText() const { return texts.value().emptyText; }
    /// What the numbers leave out or guess; empty when nothing.
    const QString& notes() const { return texts.value().notes; }

    /// The whole table as it is ordered here.
    QString asText() const;
    QString asCSV() const;
    Q_INVOKABLE void copyText() const;
    Q_INVOKABLE void copyCSV() const;

  signals:
    void modeChanged();
    void textsChanged();

  private:
    struct Texts {
        QString emptyText;
        QString notes;
        friend bool operator==(const Texts&, const Texts&) = default;
    };
    struct State {
        std::optional<Breakdown> breakdown;
        Texts texts;
    };
    Breakdown breakdown() const;
    State compute() const;

    AppModel& model;
    BreakdownModel rowModel;
    Q_OBJECT_BINDABLE_PROPERTY(ModelsView, Texts, texts, &ModelsView::textsChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(ModelsView, BreakdownMode, breakdownMode,
                                         BreakdownMode::model, &ModelsView::modeChanged)
    std::optional<ObservingUpdater<State>> updater;
};

} // namespace tokwatch
