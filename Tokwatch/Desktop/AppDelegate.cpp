#include "Tokwatch/Desktop/AppDelegate.h"

#include "KivoPaste/TextPaste.h"
#include "Platform/Linux/DesktopBus.h"
#include "Platform/System/Places.h"
#include "Tokwatch/Desktop/StatusAreaAdvice.h"
#include "Tokwatch/Desktop/StatusAreaPlace.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Updates/ConfiguredFeed.h"
#include "Tokwatch/Updates/FeedTransport.h"
#include "Tokwatch/Views/Onboarding/OnboardingView.h"
#include "Tokwatch/Views/Popover/PopoverView.h"
#include "Tokwatch/Views/Settings/SettingsView.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <QClipboard>
#include <QCursor>
#include <QDesktopServices>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPointer>
#include <QQuickView>
#include <QScreen>
#include <QStandardPaths>
#include <QStyleHints>

#include <algorithm>

namespace tokwatch {
namespace {

bool isAnyWindowShown() {
    return std::ranges::any_of(QGuiApplication::topLevelWindows(), &QWindow::isVisible);
}

const QUrl popoverSource(QStringLiteral("qrc:/qt/qml/Tokwatch/Popover/Popover.qml"));
const QUrl panelSource(QStringLiteral("qrc:/qt/qml/Tokwatch/Popover/Usage/LimitsPanel.qml"));
const QUrl settingsSource(QStringLiteral("qrc:/qt/qml/Tokwatch/Settings/SettingsContent.qml"));
const QUrl
    onboardingSource(QStringLiteral("qrc:/qt/qml/Tokwatch/Onboarding/OnboardingContent.qml"));

std::filesystem::path iconDirectory() {
    const QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    return std::filesystem::path(runtime.toStdString()) / "tokwatch/icons";
}

/// The command, which finds its way to this program.
QString commandProgram() {
    return QFile::decodeName(ourProgram("tokwatch").c_str());
}

/// What the user binds a key to where the desktop lends none: by its name alone where a shell finds
/// it by that.
QString openCommand() {
    const QString name = QStringLiteral("tokwatch");
    const QFileInfo found(QStandardPaths::findExecutable(name));
    const bool isFound =
        found.canonicalFilePath() == QFileInfo(commandProgram()).canonicalFilePath();
    return (isFound ? name : commandProgram()) + QStringLiteral(" --open");
}

/// What the desktop starts at login.
kivo::LoginItem::Program loginProgram() {
    const QLatin1String id(DesktopBus::serviceName);
    return {id,
            QStringLiteral("Tokwatch"),
            QStringLiteral("Rate limits and token usage of AI coding assistants"),
            {commandProgram()},
            id};
}

/// The toolkit takes it from there as it asks a Wayland compositor for the keyboard.
void useActivationToken(const QString& token) {
    if (!token.isEmpty()) qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
}

} // namespace

AppDelegate::AppDelegate(Surroundings surroundings, Preferences& userPreferences,
                         std::filesystem::path preferencesFile, AlertPreferences& toldOf,
                         DesktopPreferences& ofWindows, WidgetPreferences& aboutWidget,
                         DesktopBus& desktopBus, Scheduler& timers)
    : preferences(userPreferences), alertPreferences(toldOf), desktopPreferences(ofWindows),
      widgetPreferences(aboutWidget), bus(desktopBus), paths(surroundings.paths),
      settingsFile(std::move(preferencesFile)), now(surroundings.now),
      loginItem(kivo::LoginItem::userDirectory(), loginProgram()), scheduler(timers),
      appearance(desktopBus.sessionBus()),
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
        if (statusItem) statusItem->setDesktopDark(appearance.current().dark);
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
    observeTitle();
    tellOfLimits();
    bindHotKey();
    makePinnedPanel();
    if (paths.dataHome) widgetStarter.emplace(widgetPreferences, *paths.dataHome, paths.home);
    if (std::exchange(pendingOpen, false) && preferences.hasCompletedOnboarding) openPopover();
}

/// However the welcome was finished: in its window, or in another process.
void AppDelegate::followOnboarding() {
    if (!preferences.hasCompletedOnboarding) return;
    onboarding->close();
    pinWhatHasANumber();
    application->setRank(WorkLease::Rank::desktop);
    application->model().allowLimits();
    if (absence.isCertain()) openPopover();
}

/// Where Claude, whose number is the usual one, is not on the machine and nobody ever chose: the
/// first provider that has one.
void AppDelegate::pinWhatHasANumber() {
    const ProviderLocations& locations = application->model().locations();
    if (preferences.pinnedProvider.isChosen() || locations.isPresent(ProviderID::claude)) return;
    const auto found = std::ranges::find_if(allCases<ProviderID>, [&](ProviderID provider) {
        return traits(provider).publishesLimits && locations.isPresent(provider);
    });
    if (found != allCases<ProviderID>.end()) preferences.pinnedProvider = *found;
}

void AppDelegate::open() {
    if (statusItem)
        openPopover();
    else
        pendingOpen = true;
}

// Popover

void AppDelegate::openPopover() {
    popover->open(lastAnchor());
}

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
    popoverContent.emplace(runtime, scheduler,
                           QmlWindow::Content{popoverSource, [this] { return makePopoverView(); }});
    popoverWindow.emplace(*popoverContent);
    popover.emplace(*popoverWindow, now, [this] { popoverOpened(); });
    popoverContent->keepReady();
    popoverWindow->onContentHeight = [this] { popover->contentHeightChanged(); };
    popoverWindow->onPressElsewhere = [this](QPoint at, Qt::MouseButton button) {
        return pressedElsewhere(at, button);
    };
    popoverWindow->onClosed = [this] {
        countdown.reset();
        absence.popoverClosed();
        if (statusItem) statusItem->setPopoverOpen(false);
        popover->closed();
        windowClosed();
    };
}

void AppDelegate::toggle(QPoint anchor) {
    clickedAt = anchor;
    if (isSecondOfDoubleClick()) return;
    viewClock->advance();
    popover->toggle(anchor);
}

/// The click before it has opened the popover, which its user meant.
bool AppDelegate::isSecondOfDoubleClick() const {
    const Seconds interval{QGuiApplication::styleHints()->mouseDoubleClickInterval() / 1000.0};
    return popoverWindow->isShown() && now() - openedAt < interval;
}

/// The popover has the pointer, so that the panel hears nothing of a press on the item.
bool AppDelegate::pressedElsewhere(QPoint at, Qt::MouseButton button) {
    constexpr int nearby = 12; // half an item
    if (!clickedAt || (at - *clickedAt).manhattanLength() > nearby) return false;
    if (button == Qt::RightButton) {
        popover->close();
        contextMenu->open(at);
        return true;
    }
    return isSecondOfDoubleClick();
}

void AppDelegate::popoverOpened() {
    openedAt = now();
    viewClock->advance();
    application->model().popoverOpened();
    statusItem->setPopoverOpen(true);
    constexpr Seconds second{1};
    countdown = scheduler.every(second, [this] {
        const auto* view = qobject_cast<PopoverView*>(popoverContent->view());
        if (view != nullptr && view->countsDown()) viewClock->advance();
    });
}

void AppDelegate::updatePopoverStyle() {
    const bool isOrdinary = preferences.showDockIcon || absence.isCertain();
    popoverWindow->setStyle(isOrdinary ? PopoverWindow::Style::window
                                       : PopoverWindow::Style::popup);
    if (auto* view = qobject_cast<PopoverView*>(popoverContent->view()))
        view->setHostAdvice(hostAdvice());
}

QString AppDelegate::hostAdvice() const {
    return absence.isCertain() ? statusAreaAdvice(qEnvironmentVariable("XDG_CURRENT_DESKTOP"))
                               : QString();
}

QPoint AppDelegate::lastAnchor() const {
    if (clickedAt) return *clickedAt;
    const QPoint pointer = QCursor::pos();
    const QScreen* screen = QGuiApplication::screenAt(pointer);
    if (screen == nullptr) return pointer;
    return likelyStatusArea(screen->geometry(), screen->availableGeometry(),
                            QGuiApplication::isRightToLeft());
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
    const bool isSeen = popoverWindow->isShown();
    if (!isSeen && alertDisplay.isThere())
        return alertDisplay.show({"paste", "Copied to the clipboard",
                                  "It could not be pasted for you.", Alert::Urgency::low});
    if (!isSeen) openPopover();
    if (auto* view = qobject_cast<PopoverView*>(popoverContent->view()))
        view->footer()->say(QStringLiteral("Copied. Paste it where you want it."));
}

// Status item

StatusActions AppDelegate::menuActions() {
    StatusActions actions{
        .open = [this](QPoint anchor) { toggle(anchor); },
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
    const StatusActions actions = menuActions();
    statusItem.emplace(StatusItemSurroundings{bus.sessionBus(), scheduler, now, iconDirectory()},
                       actions);
    contextMenu.emplace(runtime, scheduler, [actions] { return statusMenu(actions); });
    statusItem->onContextMenu = [this](QPoint anchor) { contextMenu->open(anchor); };
    // Where nothing is grabbed, the popover hears nothing of the press that opens it.
    statusItem->onMenuShown = [this] { giveWay(); };
    statusItem->setDesktopDark(appearance.current().dark);
    statusItem->onHostChanged = [this] { hostChanged(); };
}

void AppDelegate::hostChanged() {
    const StatusAreaAbsence::Demand demand = absence.changed(isAnyWindowShown());
    updatePopoverStyle();
    if (auto* welcome = qobject_cast<OnboardingView*>(onboarding->view()))
        welcome->setHasStatusArea(!absence.isCertain());
    if (demand.givesWay) giveWay();
    if (demand.opens && preferences.hasCompletedOnboarding) {
        openPopover();
        absence.openedForIt();
    }
    if (demand.closes) popover->close();
}

StatusAreaAbsence::Sight AppDelegate::statusArea() const {
    if (!statusItem) return {};
    return {statusItem->isHostKnown(), statusItem->hasHost(), bus.sessionBus().isConnected()};
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

void AppDelegate::observeTitle() {
    AppModel& model = application->model();
    const auto content = [this, &model] {
        const Date present = model.now();
        return statusContent(preferences.plain(), model.limits(), present,
                             RunOuts(model.limits(), model.samples(), present, model.calendar()));
    };
    titleObserver.emplace(content, [this](const StatusContent& next) { statusItem->apply(next); });
    titleObserver->arm();
    statusTimer = scheduler.every(titleInterval, [this, content] {
        statusItem->apply(content());
        if (popoverWindow->isShown() || pinnedPanel->isShown()) viewClock->advance();
    });
}

// Alerts

void AppDelegate::tellOfLimits() {
    alertDisplay.onOpen = [this](const std::string& token) { openFromAlert(token); };
    limitAlerts.emplace(LimitAlerts::Services{application->model(), alertPreferences, alertDisplay,
                                              alertFileBeside(paths.database()), scheduler,
                                              application->runInBackground()});
}

void AppDelegate::openFromAlert(const std::string& activationToken) {
    useActivationToken(QString::fromStdString(activationToken));
    openPopover();
}

// Hot key

void AppDelegate::bindHotKey() {
    hotKey.emplace(desktopPreferences, [this] {
        return kivo::GlobalHotKey::make(
            bus.sessionBus(), {QStringLiteral("open"), QStringLiteral("Open or close Tokwatch")});
    });
    hotKey->onPressed = [this](const QString& activationToken) { toggleByHotKey(activationToken); };
}

void AppDelegate::toggleByHotKey(const QString& activationToken) {
    useActivationToken(activationToken);
    viewClock->advance();
    popover->toggle(lastAnchor());
}

// Pinned limits

void AppDelegate::makePinnedPanel() {
    pinnedPanel.emplace(
        runtime, scheduler,
        QmlWindow::Content{
            panelSource,
            [this] { return std::make_unique<UsageView>(application->model(), *viewClock); }},
        desktopPreferences, [this] { return lastAnchor(); });
    pinnedPanel->onClosed = [this] { windowClosed(); };
    pinNotifier = desktopPreferences.isPinned.addNotifier([this] {
        if (auto* view = qobject_cast<PopoverView*>(popoverContent->view()))
            view->setPinned(desktopPreferences.isPinned);
    });
    pinnedPanel->restore();
}

void AppDelegate::togglePin() {
    const bool isPinned = !desktopPreferences.isPinned;
    if (isPinned) giveWay();
    desktopPreferences.isPinned = isPinned;
}

// Updates

void AppDelegate::lookForUpdates() {
    const std::optional<kivo::UpdateFeed> feed = configuredFeed();
    if (!feed) return;
    updates.emplace(*feed,
                    SoftwareUpdates::Surroundings{settingsFile.parent_path() / "Updates.conf",
                                                  feedTransport(*feed), now, scheduler});
    // Of a menu that a host draws it is told at once.
    updatesNotifier = updates->preferences().agreed.addNotifier([this] {
        if (statusItem) statusItem->menuChanged();
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
                                .settingsFile = settingsFile,
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
    connect(view.get(), &OnboardingView::finished, this, &AppDelegate::openPopover);
    return view;
}

/// A popup lies above all other windows and keeps the keyboard.
void AppDelegate::giveWay() {
    if (!popoverWindow->isShownAsWindow()) popover->close();
}

void AppDelegate::openWelcome() {
    giveWay();
    onboarding->open();
}

void AppDelegate::openSettings() {
    giveWay();
    viewClock->advance();
    settingsWindow->open();
}

} // namespace tokwatch

#include "moc_AppDelegate.cpp"
