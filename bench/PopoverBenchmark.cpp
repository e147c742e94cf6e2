// How long the popover takes to open and what it costs, measured in the program's own pieces on the
// display that there is: popover-benchmark HOME DATA. Prints one JSON object. The time of an
// opening runs from the request to the first frame that was drawn.

#include "Platform/Linux/DesktopBus.h"
#include "Platform/Linux/ProcessMemory.h"
#include "Platform/Linux/QtScheduler.h"
#include "Tokwatch/Desktop/AppDelegate.h"
#include "Tokwatch/DesktopPreferences/DesktopPreferences.h"
#include "Tokwatch/Preferences/AlertPreferences.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Preferences/WidgetPreferences.h"

#include <QDBusConnection>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickView>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <string>
#include <vector>

using namespace tokwatch;

namespace {

void runFor(double seconds) {
    QEventLoop loop;
    QTimer::singleShot(static_cast<int>(seconds * 1000), &loop, &QEventLoop::quit);
    loop.exec();
}

/// In MB, shared pages counted in part.
double proportionalMemory() {
    std::ifstream smaps("/proc/self/smaps_rollup");
    std::string word;
    double kilobytes = 0;
    while (smaps >> word)
        if (word == "Pss:") smaps >> kilobytes;
    return kilobytes / 1000;
}

double processSeconds() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

QQuickWindow* popover() {
    for (QWindow* window : QGuiApplication::allWindows())
        if (auto* quick = qobject_cast<QQuickWindow*>(window)) return quick;
    return nullptr;
}

/// Milliseconds until the first frame.
double openOnce(AppDelegate& delegate) {
    QElapsedTimer timer;
    timer.start();
    delegate.open();
    QQuickWindow* window = popover();
    if (window == nullptr) return -1;
    double elapsed = 0;
    QEventLoop loop;
    QObject::connect(window, &QQuickWindow::frameSwapped, &loop, [&] {
        if (elapsed == 0) elapsed = static_cast<double>(timer.nsecsElapsed()) / 1e6;
        loop.quit();
    });
    loop.exec();
    return elapsed;
}

double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
}

QQuickItem* findItem(QQuickItem* item, const char* className) {
    if (item->inherits(className)) return item;
    for (QQuickItem* child : item->childItems())
        if (QQuickItem* found = findItem(child, className)) return found;
    return nullptr;
}

/// Milliseconds of each frame while the list of models is scrolled by a row and a half a frame.
std::vector<double> scrollModels(Preferences& preferences) {
    preferences.popoverTab = PopoverTab::models;
    runFor(2);
    QQuickItem* list = findItem(popover()->contentItem(), "QQuickListView");
    std::vector<double> frames;
    if (list == nullptr) return {-1};
    constexpr int count = 200;
    constexpr double step = 75;
    for (int frame = 0; frame < count; ++frame) {
        QElapsedTimer timer;
        timer.start();
        QEventLoop loop;
        QObject::connect(popover(), &QQuickWindow::frameSwapped, &loop, &QEventLoop::quit);
        list->setProperty("contentY", list->property("contentY").toDouble() + step);
        loop.exec();
        frames.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
    }
    return frames;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("popover-benchmark HOME DATA\n", stderr);
        return 2;
    }
    keepMemorySmall(); // as the desktop application does
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QGuiApplication application(argc, argv);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QTemporaryDir configuration;
    Preferences preferences(settingsFile(configuration.filePath("settings.conf").toStdString()));
    preferences.hasCompletedOnboarding = true;
    preferences.claudeLiveLimits = false;
    DesktopBus bus(QDBusConnection::sessionBus(), QDBusConnection::systemBus());
    UserPaths paths;
    paths.home = argv[1];
    paths.dataHome = argv[2];
    QtScheduler scheduler;
    AlertPreferences alertPreferences(
        settingsFile(configuration.filePath("notifications.conf").toStdString()));
    DesktopPreferences desktopPreferences(
        settingsFile(configuration.filePath("desktop.conf").toStdString()));
    WidgetPreferences widgetPreferences(
        settingsFile(configuration.filePath("widget.conf").toStdString()));
    AppDelegate delegate(Surroundings::real(paths), preferences, alertPreferences,
                         desktopPreferences, widgetPreferences, bus, scheduler);
    delegate.launch();
    constexpr double settledAfter = 15;
    runFor(settledAfter);
    const double trayMemory = proportionalMemory();

    const double cpuBefore = processSeconds();
    constexpr double idleSeconds = 20;
    runFor(idleSeconds);
    const double idleShare = (processSeconds() - cpuBefore) / idleSeconds;

    const double firstOpen = openOnce(delegate);
    runFor(1);
    const double openMemory = proportionalMemory();
    std::vector<double> laterOpens;
    for (int round = 0; round < 15; ++round) {
        popover()->close();
        runFor(0.5); // beyond the guard against reopening by the same click
        laterOpens.push_back(openOnce(delegate));
    }
    std::vector<double> switches;
    for (int round = 0; round < 30; ++round) {
        QElapsedTimer timer;
        timer.start();
        preferences.popoverTab = static_cast<PopoverTab>(round % 3);
        QEventLoop loop;
        QObject::connect(popover(), &QQuickWindow::frameSwapped, &loop, &QEventLoop::quit);
        loop.exec();
        if (round >= 3) switches.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
        runFor(0.05);
    }
    const std::vector<double> scrolls = scrollModels(preferences);
    popover()->close();
    constexpr double releasedAfter = 120;
    runFor(releasedAfter);
    std::printf(
        "{\"trayMB\": %.1f, \"openMB\": %.1f, \"closedMB\": %.1f, \"firstOpenMs\": %.1f, "
        "\"laterOpenMs\": %.1f, \"laterOpenMaxMs\": %.1f, \"tabSwitchMs\": %.1f, "
        "\"tabSwitchMaxMs\": %.1f, \"scrollMs\": %.1f, \"scrollMaxMs\": %.1f, \"idleCPUPercent\": %.3f}\n",
        trayMemory, openMemory, proportionalMemory(), firstOpen, median(laterOpens),
        std::ranges::max(laterOpens), median(switches), std::ranges::max(switches), median(scrolls),
        std::ranges::max(scrolls), idleShare * 100);
    return 0;
}
