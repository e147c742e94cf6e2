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
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace tokwatch {
namespace {

/// Ours, the toolkit's, and a few to spare.
constexpr int threads = 12;
/// It has 20 open while its windows are closed.
constexpr int descriptors = 32;
/// Bytes: it takes 210 MiB more with its windows open.
constexpr std::size_t addressSpace = std::size_t{240} << 20;

struct Options {
    UserPaths paths;
    bool opensAtOnce;
};

/// The same as those of the commands, which start this program.
Options optionsOf(const QGuiApplication& application) {
    QCommandLineParser parser;
    const QCommandLineOption home("home", "Where the assistants' files are.", "DIR");
    const QCommandLineOption dataDirectory("data-dir", "Where Tokwatch keeps its data.", "DIR");
    const QCommandLineOption opens("open", "Open the window at once.");
    parser.addHelpOption();
    parser.addOptions({home, dataDirectory, opens});
    parser.process(application);
    const auto path = [&parser](const QCommandLineOption& option) {
        return std::filesystem::absolute(parser.value(option).toStdString()).lexically_normal();
    };
    UserPaths paths = UserPaths::current();
    if (parser.isSet(home)) paths.home = path(home);
    if (parser.isSet(dataDirectory)) paths.dataHome = path(dataDirectory);
    return {std::move(paths), parser.isSet(opens)};
}

/// Makes this the session's one instance; the status to end with where another one is.
std::optional<int> statusBesideAnother(DesktopBus& bus, const std::function<void()>& open,
                                       bool isSessionRestored) {
    if (bus.claim(open) != DesktopBus::Claim::second) return std::nullopt;
    // A session that was saved brings it, and nobody asked for a window.
    if (isSessionRestored) return 0;
    switch (bus.openRunning()) {
    case DesktopBus::Opening::shown:
        return 0;
    case DesktopBus::Opening::claimed:
        return std::nullopt;
    case DesktopBus::Opening::unanswered:
        break;
    }
    std::fputs("tokwatch: the running Tokwatch does not answer\n", stderr);
    return 1;
}

int run(int argc, char** argv) {
    fillStandardDescriptors();
    preventCoreDumps();
    keepMemorySmall();
    ensureUTF8Locale();
    requireAddressSpace(addressSpace);
    requireThreads(threads);
    requireDescriptors(descriptors);
    leaveOutMuteBuses();
    // Pictures of this size are drawn faster, and in a third of the memory, without a graphics
    // driver.
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    std::optional<DisplayStart> start("tokwatch");
    QGuiApplication application(argc, argv);
    start.reset();
    QGuiApplication::setApplicationName(QStringLiteral("Tokwatch"));
    QGuiApplication::setDesktopFileName(QLatin1String(DesktopBus::serviceName));
    QGuiApplication::setWindowIcon(applicationIcon());
    QGuiApplication::setQuitOnLastWindowClosed(false);
    kivo::leaveOutOfSavedSessions(application);

    Options options = optionsOf(application);
    DesktopBus bus(QDBusConnection::sessionBus(), QDBusConnection::systemBus());
    AppDelegate* running = nullptr;
    const auto open = [&] {
        if (running != nullptr)
            running->open();
        else
            options.opensAtOnce = true;
    };
    if (const auto status = statusBesideAnother(bus, open, application.isSessionRestored()))
        return *status;

    // The end of a session comes as a signal, also while this starts: the item leaves the panel,
    // the settings are written.
    const TerminationSignals termination([&bus] {
        bus.release();
        QGuiApplication::quit();
    });
    Preferences preferences(settingsFile(settingsPath()));
    AlertPreferences alerts(settingsFile(alertSettingsPath()));
    DesktopPreferences desktop(settingsFile(desktopSettingsPath()));
    WidgetPreferences widget(settingsFile(widgetSettingsPath()));
    const auto groups = std::to_array<SettingsGroup*>({&preferences, &alerts, &desktop, &widget});
    for (SettingsGroup* group : groups)
        group->followFile();
    QtScheduler scheduler;
    auto delegate = std::make_unique<AppDelegate>(Surroundings::real(options.paths), preferences,
                                                  alerts, desktop, widget, bus, scheduler);
    running = delegate.get();
    if (options.opensAtOnce) delegate->open();
    delegate->launch();
    const int status = QGuiApplication::exec();
    TerminationSignals::boundTheEnd();
    bus.release();
    const auto save = [&groups] {
        for (SettingsGroup* group : groups)
            group->save();
    };
    save();
    delegate.reset(); // may wait, for the bus and for what is under way
    save();
    if (URLSessionHTTPClient::mayBeLookingUp()) TerminationSignals::endNow(status);
    return status;
}

} // namespace
} // namespace tokwatch

int main(int argc, char** argv) {
    return tokwatch::runWindows("tokwatch", [&] { return tokwatch::run(argc, argv); });
}
