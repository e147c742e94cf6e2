#pragma once

#include "Tokwatch/Views/Common/Segment.h"
#include "Tokwatch/Views/Popover/FooterView.h"
#include "Tokwatch/Views/Popover/Models/ModelsView.h"
#include "Tokwatch/Views/Popover/Range/FollowedSummary.h"
#include "Tokwatch/Views/Popover/Range/ShownRange.h"
#include "Tokwatch/Views/Popover/Stats/StatsView.h"
#include "Tokwatch/Views/Popover/Usage/UsageView.h"

#include <QObject>
#include <QProperty>
#include <qqmlregistration.h>

namespace tokwatch {

class AppModel;
class ViewClock;

/// All that the popover shows and can do. References outlive it. Main thread only.
class PopoverView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(tokwatch::Segment::Tab tab READ tab WRITE setTab NOTIFY tabChanged)
    Q_PROPERTY(QString hostAdvice READ hostAdvice NOTIFY hostAdviceChanged)
    Q_PROPERTY(bool isPinned READ isPinned NOTIFY pinnedChanged)
    Q_PROPERTY(tokwatch::UsageView* usage READ usage CONSTANT)
    Q_PROPERTY(tokwatch::StatsView* stats READ stats CONSTANT)
    Q_PROPERTY(tokwatch::ModelsView* models READ models CONSTANT)
    Q_PROPERTY(tokwatch::FooterView* footer READ footer CONSTANT)
  public:
    PopoverView(AppModel& model, ViewClock& clock, ShownRange& range);

    Segment::Tab tab() const;
    void setTab(Segment::Tab tab);
    /// How to get a status area; empty where there is one.
    const QString& hostAdvice() const { return advice.value(); }
    void setHostAdvice(const QString& next) { advice = next; }
    /// The limits stand in a panel of their own, too.
    bool isPinned() const { return pinned.value(); }
    void setPinned(bool isPinned) { pinned = isPinned; }
    UsageView* usage() { return &usageView; }
    StatsView* stats() { return &statsView; }
    ModelsView* models() { return &modelsView; }
    FooterView* footer() { return &footerView; }

    Q_INVOKABLE void refresh();
    /// Today, the last 30 days and the limits as text: for where the keyboard was before the
    /// window had it, or for the clipboard.
    Q_INVOKABLE void pasteSummary() { emit pasteRequested(summary()); }
    Q_INVOKABLE void copySummary() const;
    /// Something shown changes with every second.
    bool countsDown() const { return usageView.countsDown() || footerView.countsDown(); }

  signals:
    void tabChanged();
    void hostAdviceChanged();
    void pinnedChanged();
    void pinToggled();
    void settingsRequested();
    void quitRequested();
    void pasteRequested(const QString& text);

  private:
    QString summary() const;

    AppModel& model;
    Q_OBJECT_BINDABLE_PROPERTY(PopoverView, QString, advice, &PopoverView::hostAdviceChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(PopoverView, bool, pinned, false,
                                         &PopoverView::pinnedChanged)
    UsageView usageView;
    FollowedSummary rangeSummary;
    StatsView statsView;
    ModelsView modelsView;
    FooterView footerView;
    QPropertyNotifier tabNotifier;
    QPropertyNotifier rangeNotifier;
};

} // namespace tokwatch
