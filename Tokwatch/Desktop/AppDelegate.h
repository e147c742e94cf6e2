#pragma once

#include "Application.h"
#include "ContextMenuWindow.h"
#include "DesktopAppearance.h"
#include "HostedWindow.h"
#include "MeterStatusItem.h"
#include "ModelStatusItemSource.h"
#include "ObservingUpdater.h"
#include "PopoverController.h"
#include "PopoverWindow.h"
#include "QmlRuntime.h"
#include "Theme.h"
#include "ViewClock.h"

#include <QObject>
#include <QPoint>
#include <QPropertyNotifier>

#include <memory>
#include <optional>

namespace tokwatch {

class DesktopBus;

/// Puts the application on the desktop: the status item with its title, the popover, the settings
/// and the welcome. Main thread only; lives until the program ends.
class AppDelegate : public QObject {
    Q_OBJECT
  public:
    /// References outlive it.
    AppDelegate(Surroundings surroundings, Preferences& preferences, DesktopBus& bus);
    ~AppDelegate() override;

    /// Everything, in its order; called once.
    void launch();
    /// Shows the popover, as soon as there is a status item to show it at.
    void open();

  private:
    /// How long a title may be out of date when nothing but time changes it.
    static constexpr Seconds titleInterval{30};
    /// A status area that has not come by then is taken for missing. Panels start beside us when
    /// the session begins.
    static constexpr Seconds hostGrace{4};

    void showOnboarding();
    void openSettings();
    void makePopover();
    void makeStatusItem();
    void observeTitle();
    void toggle(QPoint anchor);
    void popoverOpened();
    void updatePopoverStyle();
    bool isWithoutHost() const;
    QString hostAdvice() const;
    QPoint lastAnchor() const;

    Preferences& preferences;
    DesktopBus& bus;
    Clock now;
    QtScheduler scheduler;
    kivo::DesktopAppearance appearance;
    kivo::Theme theme;
    QmlRuntime runtime;
    std::optional<Application> application;
    std::optional<ViewClock> viewClock;
    std::optional<HostedWindow> onboarding;
    std::optional<HostedWindow> settingsWindow;
    std::optional<HostedWindow> popoverHost;
    std::optional<PopoverWindow> popoverWindow;
    std::optional<PopoverController> popover;
    std::optional<ContextMenuWindow> contextMenu;
    std::optional<ModelStatusItemSource> itemSource;
    std::optional<MeterStatusItem> statusItem;
    std::optional<ObservingUpdater<StatusTitle>> titleObserver;
    std::unique_ptr<ScheduledCall> statusTimer;
    std::unique_ptr<ScheduledCall> hostTimer;
    QPropertyNotifier dockIconNotifier;
    std::optional<QPoint> clickedAt;
    bool hostIsKnown = false; ///< the time that a status area is given to come has passed
    bool pendingOpen = false;
};

} // namespace tokwatch
