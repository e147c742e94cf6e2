#pragma once

#include "Tokwatch/Display/ObservingUpdater.h"
#include "Tokwatch/Views/Common/Segment.h"
#include "Tokwatch/Views/Settings/SettingsPlaces.h"
#include "Tokwatch/Views/Settings/WindowTone.h"

#include <QObject>
#include <QProperty>
#include <QString>
#include <qqmlregistration.h>

namespace tokwatch {

class AppModel;
class ViewClock;

struct GeneralState {
    Q_GADGET
    Q_PROPERTY(bool startsAtLogin MEMBER startsAtLogin)
    Q_PROPERTY(QString unwritable MEMBER unwritable)
    Q_PROPERTY(bool showDockIcon MEMBER showDockIcon)
    Q_PROPERTY(tokwatch::WindowTone::Value theme MEMBER theme)
    Q_PROPERTY(tokwatch::Segment::Unit unit MEMBER unit)
    Q_PROPERTY(QString dataPlace MEMBER dataPlace)
    Q_PROPERTY(QString settingsPlace MEMBER settingsPlace)
  public:
    bool startsAtLogin = false;
    QString unwritable; ///< the entry for that, where it could not be written; else empty
    bool showDockIcon = false;
    WindowTone::Value theme = WindowTone::AsDesktop;
    Segment::Unit unit = Segment::Cost;
    QString dataPlace; ///< "~/.local/share/Tokwatch/usage.sqlite"; empty while it is in memory
    QString settingsPlace;
    friend bool operator==(const GeneralState&, const GeneralState&) = default;
};

/// The page "General". References outlive it.
class GeneralView : public QObject {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(tokwatch::GeneralState state READ state NOTIFY stateChanged)
  public:
    GeneralView(AppModel& model, const ViewClock& clock, const SettingsPlaces& places);

    const GeneralState& state() const { return current.value(); }

    Q_INVOKABLE void setStartsAtLogin(bool starts);
    Q_INVOKABLE void setShowDockIcon(bool shows);
    Q_INVOKABLE void setTheme(tokwatch::WindowTone::Value tone);
    Q_INVOKABLE void setUnit(tokwatch::Segment::Unit unit);
    /// Opens the directories in the file manager.
    Q_INVOKABLE void showData();
    Q_INVOKABLE void showSettingsFile();

  signals:
    void stateChanged();

  private:
    GeneralState computed(const ViewClock& clock) const;

    AppModel& model;
    SettingsPlaces places;
    QProperty<QString> unwritable;
    Q_OBJECT_BINDABLE_PROPERTY(GeneralView, GeneralState, current, &GeneralView::stateChanged)
    ObservingUpdater<GeneralState> updater;
};

} // namespace tokwatch
