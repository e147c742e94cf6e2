#include "AppDelegate.h"

#include "DesktopBus.h"
#include "PopoverView.h"
#include "Preferences.h"
#include "StatusAreaAdvice.h"
#include "StatusMenu.h"

#include <QCursor>
#include <QDBusConnection>
#include <QGuiApplication>
#include <QQuickView>
#include <QStandardPaths>

namespace tokwatch {
namespace {

const QUrl popoverSource(QStringLiteral("qrc:/qt/qml/Tokwatch/Popover/Popover.qml"));

std::filesystem::path iconDirectory() {
    const QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    return std::filesystem::path(runtime.toStdString()) / "tokwatch/icons";
}

} // namespace

AppDelegate::AppDelegate(Surroundings surroundings, Preferences& userPreferences,
                         DesktopBus& desktopBus)
    : preferences(userPreferences), bus(desktopBus), now(surroundings.now),
      appearance(QDBusConnection::sessionBus()), theme(appearance.current()), runtime(theme) {
    application.emplace(std::move(surroundings), preferences, bus);
    viewClock.emplace(now);
    connect(&appearance, &kivo::DesktopAppearance::changed, this, [this] {
        theme.setAppearance(appearance.current());
        if (statusItem) statusItem->setDesktopDark(appearance.current().dark);
    });
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::launch() {
    makePopover();
    updatePopoverStyle();
    dockIconNotifier = preferences.showDockIcon.addNotifier([this] { updatePopoverStyle(); });
    if (!preferences.hasCompletedOnboarding) showOnboarding();

    AppModel& model = application->model();
    model.start();
    model.onOpenRequest = [this] { popover->open(lastAnchor()); };
    makeStatusItem();
    observeTitle();
    if (std::exchange(pendingOpen, false)) model.onOpenRequest();
}

void AppDelegate::open() {
    if (statusItem)
        application->model().onOpenRequest();
    else
        pendingOpen = true;
}

// Popover

void AppDelegate::makePopover() {
    popoverHost.emplace(
        runtime, scheduler,
        HostedWindow::Content{
            popoverSource, [this] {
                auto view = std::make_unique<PopoverView>(application->model(), *viewClock);
                connect(view.get(), &PopoverView::settingsRequested, this,
                        &AppDelegate::openSettings);
                connect(view.get(), &PopoverView::quitRequested, qApp, &QCoreApplication::quit);
                return view;
            }});
    popoverWindow.emplace(*popoverHost);
    popover.emplace(*popoverWindow, now, [this] { popoverOpened(); });
    popoverWindow->onContentHeight = [this] { popover->contentHeightChanged(); };
    popoverWindow->onClosed = [this] { popover->closed(); };
}

void AppDelegate::toggle(QPoint anchor) {
    clickedAt = anchor;
    viewClock->advance();
    popover->toggle(anchor);
}

void AppDelegate::popoverOpened() {
    viewClock->advance();
    application->model().popoverOpened();
}

void AppDelegate::updatePopoverStyle() {
    const bool isOrdinary = preferences.showDockIcon || isWithoutHost();
    popoverWindow->setStyle(isOrdinary ? PopoverWindow::Style::window
                                       : PopoverWindow::Style::popup);
    if (auto* view = qobject_cast<PopoverView*>(popoverHost->view()))
        view->setHostAdvice(hostAdvice());
}

bool AppDelegate::isWithoutHost() const {
    return hostIsKnown && !statusItem->hasHost();
}

QString AppDelegate::hostAdvice() const {
    return isWithoutHost() ? statusAreaAdvice(qEnvironmentVariable("XDG_CURRENT_DESKTOP"))
                           : QString();
}

QPoint AppDelegate::lastAnchor() const {
    return clickedAt.value_or(QCursor::pos());
}

// Status item

void AppDelegate::makeStatusItem() {
    AppModel& model = application->model();
    itemSource.emplace(model);
    const StatusMenuActions actions{
        .refresh = [&model] { model.refresh(); },
        .openSettings = [this] { openSettings(); },
        .checkForUpdates = {}, // updates come with the system's packages
        .quit = [] { QCoreApplication::quit(); },
    };
    statusItem.emplace(
        StatusItemSurroundings{QDBusConnection::sessionBus(), scheduler, now, iconDirectory()},
        *itemSource, [this](QPoint anchor) { toggle(anchor); },
        [actions] { return statusMenu(actions); });
    contextMenu.emplace(runtime, scheduler, [actions] { return statusMenu(actions); });
    statusItem->onContextMenu = [this](QPoint anchor) { contextMenu->open(anchor); };
    statusItem->setDesktopDark(appearance.current().dark);
    statusItem->onHostChanged = [this] { updatePopoverStyle(); };
    hostTimer = scheduler.after(hostGrace, [this] {
        hostIsKnown = true;
        updatePopoverStyle();
        if (isWithoutHost()) popover->open(lastAnchor());
    });
}

void AppDelegate::observeTitle() {
    AppModel& model = application->model();
    titleObserver.emplace(
        [this, &model] { return statusTitle(preferences, model.limits(), model.now()); },
        [this](const StatusTitle& title) { statusItem->apply(title); });
    titleObserver->arm();
    statusTimer = scheduler.every(titleInterval, [this, &model] {
        statusItem->apply(statusTitle(preferences, model.limits(), model.now()));
        if (popoverWindow->isShown()) viewClock->advance();
    });
}

// Windows

void AppDelegate::showOnboarding() {}

void AppDelegate::openSettings() {}

} // namespace tokwatch
