#include "Tokwatch/Desktop/AppDelegate.h"

#include "KivoLaunch/SessionRestart.h"
#include "Platform/Linux/DesktopBus.h"
#include "Platform/Linux/DisplayStart.h"
#include "Platform/Linux/MuteBuses.h"
#include "Platform/Linux/ProcessMemory.h"
#include "Platform/Linux/ProcessStart.h"
#include "Platform/Linux/QtScheduler.h"
#include "Platform/Linux/TerminationSignals.h"
#include "Tokwatch/DesktopPreferences/DesktopPreferences.h"
#include "Tokwatch/Pictures/Marks.h"
#include "Tokwatch/Preferences/AlertPreferences.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Preferences/WidgetPreferences.h"
#include "TokwatchCore/Limits/URLSessionHTTPClient.h"

#include <QCommandLineParser>
#include <QDBusConnection>
#include <QGuiApplication>
#include <QQuickWindow>

#include <array>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>

namespace {

/// Ours, the toolkit's, and a few to spare.
constexpr int threads = 12;
/// It has 20 open while its windows are closed.
constexpr int descriptors = 32;
/// Bytes: it takes 210 MiB more with its windows open.
constexpr std::size_t addressSpace = std::size_t{240} << 20;

/// The same options as those of the commands, which starts this program.
tokwatch::UserPaths pathsFrom(const QCommandLineParser& parser, const QCommandLineOption& home,
                              const QCommandLineOption& dataDirectory) {
    const auto path = [&parser](const QCommandLineOption& option) {
        return std::filesystem::absolute(parser.value(option).toStdString()).lexically_normal();
    };
    tokwatch::UserPaths paths = tokwatch::UserPaths::current();
    if (parser.isSet(home)) paths.home = path(home);
    if (parser.isSet(dataDirectory)) paths.dataHome = path(dataDirectory);
    return paths;
}

int run(int argc, char** argv) {
    tokwatch::fillStandardDescriptors();
    tokwatch::preventCoreDumps();
    tokwatch::keepMemorySmall();
    tokwatch::ensureUTF8Locale();
    tokwatch::requireAddressSpace(addressSpace);
    tokwatch::requireThreads(threads);
    tokwatch::requireDescriptors(descriptors);
    tokwatch::leaveOutMuteBuses();
    // Pictures of this size are drawn faster, and in a third of the memory, without a graphics
    // driver.
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    std::optional<tokwatch::DisplayStart> start("tokwatch");
    QGuiApplication application(argc, argv);
    start.reset();
    QGuiApplication::setApplicationName(QStringLiteral("Tokwatch"));
    QGuiApplication::setDesktopFileName(QLatin1String(tokwatch::DesktopBus::serviceName));
    QGuiApplication::setWindowIcon(tokwatch::applicationIcon());
    QGuiApplication::setQuitOnLastWindowClosed(false);
    kivo::leaveOutOfSavedSessions(application);

    QCommandLineParser parser;
    const QCommandLineOption home("home", "Where the assistants' files are.", "DIR");
    const QCommandLineOption dataDirectory("data-dir", "Where Tokwatch keeps its data.", "DIR");
    const QCommandLineOption opens("open", "Open the window at once.");
    parser.addHelpOption();
    parser.addOptions({home, dataDirectory, opens});
    parser.process(application);

    tokwatch::DesktopBus bus(QDBusConnection::sessionBus(), QDBusConnection::systemBus());
    std::unique_ptr<tokwatch::AppDelegate> delegate;
    bool openAtOnce = parser.isSet(opens);
    const auto open = [&] {
        if (delegate)
            delegate->open();
        else
            openAtOnce = true;
    };
    if (bus.claim(open) == tokwatch::DesktopBus::Claim::second) {
        // A session that was saved brings it, and nobody asked for a window.
        if (application.isSessionRestored()) return 0;
        const tokwatch::DesktopBus::Opening opening = bus.openRunning();
        if (opening == tokwatch::DesktopBus::Opening::shown) return 0;
        if (opening == tokwatch::DesktopBus::Opening::unanswered) {
            std::fputs("tokwatch: the running Tokwatch does not answer\n", stderr);
            return 1;
        }
    }

    // The end of a session comes as a signal, also while this starts: the item leaves the panel,
    // the settings are written.
    const tokwatch::TerminationSignals termination([&bus] {
        bus.release();
        QGuiApplication::quit();
    });
    tokwatch::Preferences preferences(tokwatch::settingsFile(tokwatch::settingsPath()));
    tokwatch::AlertPreferences alerts(tokwatch::settingsFile(tokwatch::alertSettingsPath()));
    tokwatch::DesktopPreferences desktop(tokwatch::settingsFile(tokwatch::desktopSettingsPath()));
    tokwatch::WidgetPreferences widget(tokwatch::settingsFile(tokwatch::widgetSettingsPath()));
    const auto groups =
        std::to_array<tokwatch::SettingsGroup*>({&preferences, &alerts, &desktop, &widget});
    for (tokwatch::SettingsGroup* group : groups)
        group->followFile();
    tokwatch::QtScheduler scheduler;
    delegate = std::make_unique<tokwatch::AppDelegate>(
        tokwatch::Surroundings::real(pathsFrom(parser, home, dataDirectory)), preferences, alerts,
        desktop, widget, bus, scheduler);
    if (openAtOnce) delegate->open();
    delegate->launch();
    const int status = QGuiApplication::exec();
    tokwatch::TerminationSignals::boundTheEnd();
    bus.release();
    delegate.reset();
    for (tokwatch::SettingsGroup* group : groups)
        group->save();
    if (tokwatch::URLSessionHTTPClient::mayBeLookingUp())
        tokwatch::TerminationSignals::endNow(status);
    return status;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tokwatch: starting failed: %s\n", error.what());
        return 1;
    }
}
