#pragma once

#include "Tokwatch/Display/ObservingUpdater.h"
#include "Tokwatch/Views/Settings/SettingsPlaces.h"
#include "TokwatchCore/Support/Date.h"

#include <QObject>
#include <QProperty>
#include <QString>
#include <qqmlregistration.h>

#include <memory>

namespace tokwatch {

class AppModel;
class ViewClock;

struct UpdatesState {
    Q_GADGET
    Q_PROPERTY(QString privacy MEMBER privacy)
    Q_PROPERTY(bool isAgreed MEMBER isAgreed)
    Q_PROPERTY(QString headline MEMBER headline)
    Q_PROPERTY(QString caption MEMBER caption)
    Q_PROPERTY(bool isProblem MEMBER isProblem)
    Q_PROPERTY(bool mayCheck MEMBER mayCheck)
    Q_PROPERTY(bool hasNews MEMBER hasNews)
    Q_PROPERTY(QString notes MEMBER notes)
  public:
    QString privacy; ///< who is asked, and what is not sent
    bool isAgreed = false;
    QString headline; ///< "Tokwatch 1.2.0 is available"
    QString caption;  ///< what to do about it, what went wrong, or when the feed was asked
    bool isProblem = false;
    bool mayCheck = false; ///< at present
    bool hasNews = false;
    QString notes; ///< of the new version, plain text
    friend bool operator==(const UpdatesState&, const UpdatesState&) = default;
};

/// The updates on the page "About". References outlive it.
class UpdatesView : public QObject {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(tokwatch::UpdatesState state READ state NOTIFY stateChanged)
  public:
    UpdatesView(const AppModel& model, const ViewClock& clock, SoftwareUpdates& updates,
                std::function<void(const QUrl&)> open);

    const UpdatesState& state() const { return current.value(); }

    Q_INVOKABLE void setAgreed(bool isAgreed);
    Q_INVOKABLE void check();
    /// Shows the new version's page in the browser.
    Q_INVOKABLE void openPage();

  signals:
    void stateChanged();

  private:
    UpdatesState computed(const AppModel& model, Date now) const;

    SoftwareUpdates& updates;
    std::function<void(const QUrl&)> open;
    Q_OBJECT_BINDABLE_PROPERTY(UpdatesView, UpdatesState, current, &UpdatesView::stateChanged)
    ObservingUpdater<UpdatesState> updater;
};

/// None where there is no feed to ask.
std::unique_ptr<UpdatesView> makeUpdatesView(const AppModel& model, const ViewClock& clock,
                                             const SettingsPlaces& places);

} // namespace tokwatch
