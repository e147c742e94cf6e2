#pragma once

#include "Tokwatch/Display/ObservingUpdater.h"
#include "TokwatchCore/Support/Date.h"

#include <QObject>
#include <QProperty>
#include <QString>
#include <qqmlregistration.h>

#include <optional>

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
    QString updated; ///< "Updated 5 min ago · limits 7 h ago", or why a refresh asks nobody
    bool countsDown = false;
    friend bool operator==(const FooterState&, const FooterState&) = default;
};

/// The popover's lower edge. References outlive it.
class FooterView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(tokwatch::FooterState state READ state NOTIFY stateChanged)
  public:
    /// How long it is said that a refresh came too soon, and what else was said.
    static constexpr Seconds noteTime{10};

    FooterView(AppModel& model, ViewClock& clock);

    const FooterState& state() const { return current.value(); }
    /// What is shown changes with every second.
    bool countsDown() const { return current.value().countsDown; }

    /// The user asked for a refresh. Where that was too soon for limits, it says so for a while.
    void refreshAsked();
    /// Says something of what the user just did, for as long.
    void say(const QString& sentence);

  signals:
    void stateChanged();

  private:
    FooterState state(const AppModel& model, Date now) const;

    ViewClock& clock;
    struct Saying {
        QString sentence;
        Date at;
        friend bool operator==(const Saying&, const Saying&) = default;
    };
    QProperty<std::optional<Saying>> said;
    QProperty<std::optional<Date>> asked; ///< when the user last did
    Q_OBJECT_BINDABLE_PROPERTY(FooterView, FooterState, current, &FooterView::stateChanged)
    ObservingUpdater<FooterState> updater;
};

} // namespace tokwatch
