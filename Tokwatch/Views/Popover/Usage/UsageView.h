#pragma once

#include "Tokwatch/Display/ObservingUpdater.h"
#include "Tokwatch/Views/Common/RowModel.h"
#include "Tokwatch/Views/Common/Segment.h"
#include "Tokwatch/Views/Common/Text.h"
#include "Tokwatch/Views/Popover/Usage/LimitRows.h"
#include "Tokwatch/Views/Popover/Usage/SummaryRows.h"

#include <QObject>
#include <QProperty>
#include <QStringList>
#include <QVariantList>
#include <qqmlregistration.h>

namespace tokwatch {

class AppModel;
class ViewClock;

/// The tab with what is left of each limit, and the summary. References outlive it.
class UsageView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(tokwatch::RowModel* providers READ providers CONSTANT)
    Q_PROPERTY(QVariantList quiet READ quiet NOTIFY quietChanged)
    Q_PROPERTY(tokwatch::SummaryCard summary READ summary NOTIFY summaryChanged)
    Q_PROPERTY(QStringList lookedAt READ lookedAt NOTIFY lookedAtChanged)
    Q_PROPERTY(QStringList advice READ advice NOTIFY lookedAtChanged)
    Q_PROPERTY(QString invitation READ invitation CONSTANT)
  public:
    UsageView(AppModel& model, const ViewClock& clock);

    RowModel* providers() { return &providerModel; }
    /// Of QuietProvider.
    const QVariantList& quiet() const { return quietList.value(); }
    /// Something shown changes with every second.
    bool countsDown() const { return hasCountdown; }
    const SummaryCard& summary() const { return card.value(); }
    /// The places where assistants were looked for; empty unless none was found.
    const QStringList& lookedAt() const { return places.value(); }
    /// With them: what makes those visible that are elsewhere.
    QStringList advice() const;
    QString invitation() const { return invitationToUseOne(); }

    Q_INVOKABLE void act(const QString& provider, tokwatch::ProviderAction::Value action);
    /// What the summary leads with.
    Q_INVOKABLE void setUnit(tokwatch::Segment::Unit unit);

  signals:
    void quietChanged();
    void summaryChanged();
    void lookedAtChanged();
    void welcomeRequested();

  private:
    ProvidersKnown known() const;
    void showProviders(const std::vector<ProviderRow>& rows);
    QStringList searchedPlaces() const;

    AppModel& model;
    RowModel providerModel;
    bool hasCountdown = false;
    Q_OBJECT_BINDABLE_PROPERTY(UsageView, QVariantList, quietList, &UsageView::quietChanged)
    Q_OBJECT_BINDABLE_PROPERTY(UsageView, SummaryCard, card, &UsageView::summaryChanged)
    Q_OBJECT_BINDABLE_PROPERTY(UsageView, QStringList, places, &UsageView::lookedAtChanged)
    ObservingUpdater<std::vector<ProviderRow>> providersUpdater;
    ObservingUpdater<std::vector<QuietProvider>> quietUpdater;
    ObservingUpdater<SummaryCard> summaryUpdater;
    ObservingUpdater<QStringList> placesUpdater;
};

} // namespace tokwatch
