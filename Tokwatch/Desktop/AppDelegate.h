#pragma once

#include "KivoLaunch/LoginItem.h"
#include "KivoLooks/DesktopAppearance.h"
#include "KivoMenuBar/MainMenu.h"
#include "KivoTheme/Theme.h"
#include "Platform/Linux/DesktopAlerts.h"
#include "Tokwatch/Alerts/LimitAlerts.h"
#include "Tokwatch/App/Application.h"
#include "Tokwatch/Desktop/ContentWindow.h"
#include "Tokwatch/Desktop/PinnedPanel.h"
#include "Tokwatch/Desktop/Popover.h"
#include "Tokwatch/Desktop/QmlRuntime.h"
#include "Tokwatch/Desktop/StatusAreaAbsence.h"
#include "Tokwatch/Desktop/StatusSurface.h"
#include "Tokwatch/Desktop/WidgetStarter.h"
#include "Tokwatch/DesktopPreferences/ChosenHotKey.h"
#include "Tokwatch/DesktopPreferences/DesktopPreferences.h"
#include "Tokwatch/Updates/SoftwareUpdates.h"
#include "Tokwatch/Views/Common/ViewClock.h"
#include "Tokwatch/Views/Popover/Range/ShownRange.h"

#include <QObject>
#include <QPropertyNotifier>

#include <memory>
#include <optional>

namespace tokwatch {

class DesktopBus;
class OnboardingView;
class PopoverView;
class SettingsView;
class WidgetPreferences;

/// Puts the application on the desktop: the status item with its title, the popover, the settings
/// and the welcome. Main thread only; lives until the program ends.
class AppDelegate : public QObject {
    Q_OBJECT
  public:
    /// References outlive it.
    AppDelegate(Surroundings surroundings, Preferences& preferences,
                AlertPreferences& alertPreferences, DesktopPreferences& desktopPreferences,
                WidgetPreferences& widgetPreferences, DesktopBus& bus, Scheduler& timers);
    ~AppDelegate() override;

    /// Everything, in its order; called once.
    void launch();
    /// Shows the popover, as soon as there is a status item to show it at.
    void open();

  private:
    /// How long what a window says of ages and remaining times may be out of date.
    static constexpr Seconds ageInterval{30};

    void followOnboarding();
    void pinWhatHasANumber();
    void openWelcome();
    void applyTheme();
    void openSettings();
    void lookForUpdates();
    void checkForUpdates();
    std::unique_ptr<PopoverView> makePopoverView();
    void paste(const QString& text);
    void sayCopied();
    void makePopover();
    void makePinnedPanel();
    void togglePin();
    void advanceAges();
    void makeWindows();
    std::unique_ptr<SettingsView> makeSettings();
    std::unique_ptr<OnboardingView> makeWelcome();
    StatusActions menuActions();
    void makeMainMenu();
    void makeStatusItem();
    void hostChanged();
    void windowClosed();
    void tellOfLimits();
    void bindHotKey();
    void popoverOpened();
    void popoverClosed();
    void updatePopoverStyle();
    StatusAreaAbsence::Sight statusArea() const;
    QString hostAdvice() const;

    Preferences& preferences;
    AlertPreferences& alertPreferences;
    DesktopPreferences& desktopPreferences;
    WidgetPreferences& widgetPreferences;
    DesktopBus& bus;
    UserPaths paths;
    Clock now;
    kivo::LoginItem loginItem;
    Scheduler& scheduler;
    kivo::DesktopAppearance appearance;
    kivo::Theme theme;
    QmlRuntime runtime;
    DesktopAlerts alertDisplay;
    std::optional<Application> application;
    std::optional<LimitAlerts> limitAlerts;
    std::optional<ViewClock> viewClock;
    ShownRange shownRange;
    std::optional<SoftwareUpdates> updates; ///< none where no feed was configured
    QPropertyNotifier updatesNotifier;
    std::optional<WidgetStarter> widgetStarter;
    std::optional<ContentWindow> onboarding;
    std::optional<ContentWindow> settingsWindow;
    std::optional<Popover> popover;
    std::optional<kivo::MainMenu> mainMenu;
    std::optional<PinnedPanel> pinnedPanel;
    std::optional<ChosenHotKey> hotKey;
    StatusAreaAbsence absence;
    std::optional<StatusSurface> statusSurface;
    std::unique_ptr<ScheduledCall> ageTimer;
    QPropertyNotifier dockIconNotifier;
    QPropertyNotifier themeNotifier;
    QPropertyNotifier pinNotifier;
    QPropertyNotifier onboardingNotifier;
    bool pendingOpen = false;
};

} // namespace tokwatch
