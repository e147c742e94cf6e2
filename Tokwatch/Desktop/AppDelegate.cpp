#include "Tokwatch/Desktop/AppDelegate.h"

#include "KivoPaste/TextPaste.h"
#include "Platform/Linux/DesktopBus.h"
#include "Tokwatch/Desktop/OurPrograms.h"
#include "Tokwatch/Desktop/StatusAreaAdvice.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Updates/ConfiguredFeed.h"
#include "Tokwatch/Updates/FeedTransport.h"
#include "Tokwatch/Views/Onboarding/OnboardingView.h"
#include "Tokwatch/Views/Popover/PopoverView.h"
#include "Tokwatch/Views/Settings/SettingsView.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QPointer>
#include <QStandardPaths>
#include <QWindow>

#include <algorithm>
#include <filesystem>

namespace tokwatch {
namespace {

bool isAnyWindowShown() {
    return std::ranges::any_of(QGuiApplication::topLevelWindows(), &QWindow::isVisible);
}

const QUrl panelSource(QStringLiteral("qrc:/qt/qml/Tokwatch/Popover/Usage/LimitsPanel.qml"));
const QUrl settingsSource(QStringLiteral("qrc:/qt/qml/Tokwatch/Settings/SettingsContent.qml"));
const QUrl
    onboardingSource(QStringLiteral("qrc:/qt/qml/Tokwatch/Onboarding/OnboardingContent.qml"));

/// Empty where the session has no directory of its own: the toolkit takes none that is another
/// user's.
std::filesystem::path iconDirectory() {
    const std::filesystem::path runtime(
        QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation).toStdString());
    return runtime.is_absolute() ? runtime / "tokwatch/icons" : std::filesystem::path();
}

} // namespace

AppDelegate::AppDelegate(Surroundings surroundings, Preferences& userPreferences,
                         AlertPreferences& toldOf, DesktopPreferences& ofWindows,
                         WidgetPreferences& aboutWidget, DesktopBus& desktopBus, Scheduler& timers)
    : preferences(userPreferences), alertPreferences(toldOf), desktopPreferences(ofWindows),
      widgetPreferences(aboutWidget), bus(desktopBus), paths(surroundings.paths),
      now(surroundings.now), loginItem(kivo::LoginItem::userDirectory(), loginProgram()),
      scheduler(timers), appearance(desktopBus.sessionBus()),
      theme(kivo::inTone(appearance.current(), ofWindows.theme.peek())), runtime(theme),
      alertDisplay(desktopBus.sessionBus()), absence([this] { return statusArea(); }, now) {
    // Before the welcome is finished nobody is asked; a follower, whose user started it to ask,
    // does.
    const auto rank =
        preferences.hasCompletedOnboarding ? WorkLease::Rank::desktop : WorkLease::Rank::guest;
    application.emplace(std::move(surroundings), rank, preferences, bus);
    viewClock.emplace(now);
    connect(&appearance, &kivo::DesktopAppearance::changed, this, [this] {
        applyTheme();
        if (statusSurface) statusSurface->item().setDesktopDark(appearance.current().dark);
    });
    themeNotifier = desktopPreferences.theme.addNotifier([this] { applyTheme(); });
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applyTheme() {
    theme.setAppearance(kivo::inTone(appearance.current(), desktopPreferences.theme));
}

void AppDelegate::launch() {
    lookForUpdates();
    makeMainMenu();
    makePopover();
    updatePopoverStyle();
    dockIconNotifier = preferences.showDockIcon.addNotifier([this] { updatePopoverStyle(); });
    makeWindows();
    if (!preferences.hasCompletedOnboarding) onboarding->open();

    application->start(preferences.hasCompletedOnboarding ? LimitsStart::atOnce
                                                          : LimitsStart::whenAllowed);
    onboardingNotifier =
        preferences.hasCompletedOnboarding.addNotifier([this] { followOnboarding(); });
    makeStatusItem();
    tellOfLimits();
    bindHotKey();
    makePinnedPanel();
    ageTimer = scheduler.every(ageInterval, [this] { advanceAges(); });
    if (paths.dataHome) widgetStarter.emplace(widgetPreferences, *paths.dataHome, paths.home);
    if (std::exchange(pendingOpen, false) && preferences.hasCompletedOnboarding) popover->open();
}

/// However the welcome was finished: in its window, or in another process.
void AppDelegate::followOnboarding() {
    if (!preferences.hasCompletedOnboarding) return;
    onboarding->close();
    pinWhatHasANumber();
    application->setRank(WorkLease::Rank::desktop);
    application->model().allowLimits();
    if (absence.isCertain()) popover->open();
}

/// Where Claude, whose number is the usual one, is not on the machine and nobody ever chose: the
/// first provider that has one.
void AppDelegate::pinWhatHasANumber() {
    const ProviderLocations& locations = application->model().locations();
    if (!preferences.areKnown() || preferences.pinnedProvider.isChosen() ||
        locations.isPresent(ProviderID::claude))
        return;
    const auto found = std::ranges::find_if(allCases<ProviderID>, [&](ProviderID provider) {
        return traits(provider).publishesLimits && locations.isPresent(provider);
    });
    if (found != allCases<ProviderID>.end()) preferences.pinnedProvider = *found;
}

void AppDelegate::open() {
    if (statusSurface)
        popover->open();
    else
        pendingOpen = true;
}

// Popover

std::unique_ptr<PopoverView> AppDelegate::makePopoverView() {
    auto view = std::make_unique<PopoverView>(application->model(), *viewClock, shownRange);
    view->setHostAdvice(hostAdvice());
    view->setPinned(desktopPreferences.isPinned);
    connect(view.get(), &PopoverView::pinToggled, this, &AppDelegate::togglePin);
    connect(view.get(), &PopoverView::settingsRequested, this, &AppDelegate::openSettings);
    connect(view.get(), &PopoverView::quitRequested, qApp, &QCoreApplication::quit);
    connect(view.get(), &PopoverView::pasteRequested, this, &AppDelegate::paste);
    connect(view->usage(), &UsageView::welcomeRequested, this, &AppDelegate::openWelcome);
    return view;
}

void AppDelegate::makePopover() {
    popover.emplace(
        runtime, scheduler, *viewClock, now,
        Popover::Hooks{.makeView = [this] { return makePopoverView(); },
                       .opened = [this] { popoverOpened(); },
                       .closed = [this] { popoverClosed(); },
                       .menuWanted = [this](QPoint at) { statusSurface->openMenu(at); }});
}

void AppDelegate::popoverOpened() {
    application->model().popoverOpened();
    statusSurface->item().setPopoverOpen(true);
}

void AppDelegate::popoverClosed() {
    absence.popoverClosed();
    if (statusSurface) statusSurface->item().setPopoverOpen(false);
    windowClosed();
}

void AppDelegate::updatePopoverStyle() {
    const bool isOrdinary = preferences.showDockIcon || absence.isCertain();
    popover->setStyle(isOrdinary ? PopoverWindow::Style::window : PopoverWindow::Style::popup);
    if (PopoverView* view = popover->view()) view->setHostAdvice(hostAdvice());
}

QString AppDelegate::hostAdvice() const {
    return absence.isCertain() ? statusAreaAdvice(qEnvironmentVariable("XDG_CURRENT_DESKTOP"))
                               : QString();
}

/// The popover gives the keyboard back first. Where that is of no use, or the program would end
/// with its only window, it stays and says that there is something to paste.
void AppDelegate::paste(const QString& text) {
    if (!kivo::canPaste() || absence.isCertain()) {
        QGuiApplication::clipboard()->setText(text);
        return sayCopied();
    }
    popover->close();
    kivo::pasteText(bus.sessionBus(), text, [this, alive = QPointer(this)](auto outcome) {
        if (alive && outcome == kivo::PasteOutcome::copied) sayCopied();
    });
}

void AppDelegate::sayCopied() {
    const bool isSeen = popover->isShown();
    if (!isSeen && alertDisplay.isThere())
        return alertDisplay.show({"paste", "Copied to the clipboard",
                                  "It could not be pasted for you.", Alert::Urgency::low});
    if (!isSeen) popover->open();
    if (PopoverView* view = popover->view())
        view->footer()->say(QStringLiteral("Copied. Paste it where you want it."));
}

// Status item

StatusActions AppDelegate::menuActions() {
    StatusActions actions{
        .open = [this](QPoint at) { popover->click(at); },
        .refresh = [this] { application->model().refresh(); },
        .openSettings = [this] { openSettings(); },
        .quit = [] { QCoreApplication::quit(); },
        .canCheckForUpdates = [this] { return updates && updates->updater().canCheck(); },
        .checkForUpdates = [this] { checkForUpdates(); },
    };
    if (const QUrl page = makersPage(); !page.isEmpty())
        actions.openMakersPage = [page] { QDesktopServices::openUrl(page); };
    return actions;
}

void AppDelegate::makeMainMenu() {
    mainMenu.emplace(bus.sessionBus(), QStringLiteral("Tokwatch"),
                     [actions = menuActions()] { return statusMenu(actions); });
}

void AppDelegate::makeStatusItem() {
    statusSurface.emplace(StatusItemSurroundings{bus.sessionBus(), scheduler, now, iconDirectory()},
                          runtime, StatusSurface::Sources{application->model(), preferences},
                          menuActions());
    MeterStatusItem& item = statusSurface->item();
    // Where nothing is grabbed, the popover hears nothing of the press that opens it.
    item.onMenuShown = [this] { popover->giveWay(); };
    item.onHostChanged = [this] { hostChanged(); };
    item.setDesktopDark(appearance.current().dark);
    statusSurface->showTitle();
}

void AppDelegate::hostChanged() {
    const StatusAreaAbsence::Demand demand = absence.changed(isAnyWindowShown());
    updatePopoverStyle();
    if (auto* welcome = qobject_cast<OnboardingView*>(onboarding->view()))
        welcome->setHasStatusArea(!absence.isCertain());
    if (demand.givesWay) popover->giveWay();
    if (demand.opens && preferences.hasCompletedOnboarding) {
        popover->open();
        absence.openedForIt();
    }
    if (demand.closes) popover->close();
}

StatusAreaAbsence::Sight AppDelegate::statusArea() const {
    if (!statusSurface) return {};
    const MeterStatusItem& item = statusSurface->item();
    return {item.isHostKnown(), item.hasHost(), bus.sessionBus().isConnected()};
}

/// A program that neither a window nor a status area leads to could not be found again.
void AppDelegate::windowClosed() {
    const auto endIfUnreachable = [this] {
        if (isAnyWindowShown() || !absence.isForGood()) return;
        if (absence.hadArea())
            systemLog("the session bus is gone, and with it the status area: ending");
        QCoreApplication::quit();
    };
    // Later: one window may give way to another.
    QMetaObject::invokeMethod(this, endIfUnreachable, Qt::QueuedConnection);
}

// Alerts

void AppDelegate::tellOfLimits() {
    alertDisplay.onOpen = [this](const std::string& token) {
        popover->open(QString::fromStdString(token));
    };
    limitAlerts.emplace(LimitAlerts::Services{application->model(), alertPreferences, alertDisplay,
                                              alertFileBeside(paths.database()), scheduler,
                                              application->runInBackground()});
}

// Hot key

void AppDelegate::bindHotKey() {
    hotKey.emplace(desktopPreferences, [this] {
        return kivo::GlobalHotKey::make(
            bus.sessionBus(), {QStringLiteral("open"), QStringLiteral("Open or close Tokwatch")});
    });
    hotKey->onPressed = [this](const QString& token) { popover->toggle(token); };
}

// Pinned limits

void AppDelegate::makePinnedPanel() {
    pinnedPanel.emplace(
        runtime, scheduler,
        QmlWindow::Content{
            panelSource,
            [this] { return std::make_unique<UsageView>(application->model(), *viewClock); }},
        desktopPreferences, [this] { return popover->anchor(); });
    pinnedPanel->onClosed = [this] { windowClosed(); };
    pinNotifier = desktopPreferences.isPinned.addNotifier([this] {
        if (PopoverView* view = popover->view()) view->setPinned(desktopPreferences.isPinned);
    });
    pinnedPanel->restore();
}

void AppDelegate::togglePin() {
    const bool isPinned = !desktopPreferences.isPinned;
    if (isPinned) popover->giveWay();
    desktopPreferences.isPinned = isPinned;
}

void AppDelegate::advanceAges() {
    if (isAnyWindowShown()) viewClock->advance();
}

// Updates

void AppDelegate::lookForUpdates() {
    const std::optional<kivo::UpdateFeed> feed = configuredFeed();
    if (!feed) return;
    updates.emplace(*feed,
                    SoftwareUpdates::Surroundings{preferences.file().parent_path() / "Updates.conf",
                                                  feedTransport(*feed), now, scheduler});
    // Of a menu that a host draws it is told at once.
    updatesNotifier = updates->preferences().agreed.addNotifier([this] {
        if (statusSurface) statusSurface->item().menuChanged();
        mainMenu->rebuild();
    });
}

void AppDelegate::checkForUpdates() {
    openSettings();
    if (auto* settings = qobject_cast<SettingsView*>(settingsWindow->view()))
        settings->setPage(SettingsView::Page::about);
    updates->updater().check();
}

// Windows

void AppDelegate::makeWindows() {
    settingsWindow.emplace(
        runtime, scheduler, QmlWindow::Content{settingsSource, [this] { return makeSettings(); }},
        ContentWindow::Frame{QStringLiteral("Tokwatch Settings"), {720, 520}, {560, 300}});
    onboarding.emplace(runtime, scheduler,
                       QmlWindow::Content{onboardingSource, [this] { return makeWelcome(); }},
                       ContentWindow::Frame{QStringLiteral("Welcome to Tokwatch"), {500, 0}});
    for (ContentWindow* window : {&*settingsWindow, &*onboarding})
        connect(window, &ContentWindow::closed, this, &AppDelegate::windowClosed);
}

std::unique_ptr<SettingsView> AppDelegate::makeSettings() {
    const SettingsPlaces places{.database = paths.database(),
                                .settingsFile = preferences.file(),
                                .alerts = alertPreferences,
                                .desktop = desktopPreferences,
                                .widget = widgetPreferences,
                                .hotKey = *hotKey,
                                .openCommand = openCommand(),
                                .loginItem = loginItem,
                                .open = QDesktopServices::openUrl,
                                .updates = updates ? &*updates : nullptr};
    auto view = std::make_unique<SettingsView>(application->model(), *viewClock, places);
    connect(view.get(), &SettingsView::quitRequested, qApp, &QCoreApplication::quit);
    return view;
}

std::unique_ptr<OnboardingView> AppDelegate::makeWelcome() {
    auto view =
        std::make_unique<OnboardingView>(preferences, application->model().locations(), loginItem);
    view->setHasStatusArea(!absence.isCertain());
    connect(view.get(), &OnboardingView::finished, this, &AppDelegate::open);
    return view;
}

void AppDelegate::openWelcome() {
    popover->giveWay();
    onboarding->open();
}

void AppDelegate::openSettings() {
    popover->giveWay();
    viewClock->advance();
    settingsWindow->open();
}

} // namespace tokwatch

#include "moc_AppDelegate.cpp"
