#pragma once

#include "Tokwatch/Display/ObservingUpdater.h"
#include "Tokwatch/Views/Settings/AlertsView.h"
#include "Tokwatch/Views/Settings/GeneralView.h"
#include "Tokwatch/Views/Settings/HotKeyView.h"
#include "Tokwatch/Views/Settings/MenuBarView.h"
#include "Tokwatch/Views/Settings/ProvidersView.h"
#include "Tokwatch/Views/Settings/UpdatesView.h"
#include "Tokwatch/Views/Settings/WidgetView.h"

#include <QObject>
#include <QProperty>
#include <qqmlregistration.h>

#include <memory>

namespace tokwatch {

class AppModel;
class ViewClock;

/// All that the settings window shows and can do. References outlive it. Main thread only.
class SettingsView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(Page page READ page WRITE setPage NOTIFY pageChanged)
    Q_PROPERTY(tokwatch::GeneralView* general READ general CONSTANT)
    Q_PROPERTY(tokwatch::HotKeyView* hotKey READ hotKey CONSTANT)
    Q_PROPERTY(tokwatch::MenuBarView* menuBar READ menuBar CONSTANT)
    Q_PROPERTY(tokwatch::AlertsView* alerts READ alerts CONSTANT)
    Q_PROPERTY(tokwatch::WidgetView* widget READ widget CONSTANT)
    Q_PROPERTY(tokwatch::ProvidersView* providers READ providers CONSTANT)
    Q_PROPERTY(tokwatch::UpdatesView* updates READ updates CONSTANT)
    Q_PROPERTY(QString unsaved READ unsaved NOTIFY unsavedChanged)
    Q_PROPERTY(QString claudeServer READ claudeServer CONSTANT)
    Q_PROPERTY(QString codexServer READ codexServer CONSTANT)
    Q_PROPERTY(QString version READ version CONSTANT)
  public:
    enum class Page { general, menuBar, alerts, widget, providers, privacy, about };
    Q_ENUM(Page)

    SettingsView(AppModel& model, const ViewClock& clock, const SettingsPlaces& places);

    Page page() const { return shown; }
    void setPage(Page page) { shown = page; }
    GeneralView* general() { return &generalView; }
    HotKeyView* hotKey() { return &hotKeyView; }
    MenuBarView* menuBar() { return &menuBarView; }
    AlertsView* alerts() { return &alertsView; }
    WidgetView* widget() { return &widgetView; }
    ProvidersView* providers() { return &providersView; }
    /// Null where there is no feed to ask.
    UpdatesView* updates() { return updatesView.get(); }
    /// A sentence while changes cannot be kept.
    QString unsaved() const { return warning.value(); }
    /// Whom the logins go to.
    static QString claudeServer();
    static QString codexServer();
    static QString version(); ///< "1.0.0"

  signals:
    void pageChanged();
    void unsavedChanged();
    void closeRequested();
    void quitRequested();

  private:
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(SettingsView, Page, shown, Page::general,
                                         &SettingsView::pageChanged)
    GeneralView generalView;
    HotKeyView hotKeyView;
    MenuBarView menuBarView;
    AlertsView alertsView;
    WidgetView widgetView;
    ProvidersView providersView;
    const std::unique_ptr<UpdatesView> updatesView;
    Q_OBJECT_BINDABLE_PROPERTY(SettingsView, QString, warning, &SettingsView::unsavedChanged)
    ObservingUpdater<QString> warningUpdater;
};

} // namespace tokwatch
