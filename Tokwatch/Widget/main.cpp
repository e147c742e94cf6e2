#include "KivoLaunch/DetachedStart.h"
#include "KivoLaunch/SessionRestart.h"
#include "KivoLooks/DesktopAppearance.h"
#include "Platform/Linux/DisplayStart.h"
#include "Platform/Linux/InotifyStream.h"
#include "Platform/Linux/MuteBuses.h"
#include "Platform/Linux/ProcessMemory.h"
#include "Platform/Linux/ProcessStart.h"
#include "Platform/Linux/QtScheduler.h"
#include "Platform/Linux/TerminationSignals.h"
#include "Platform/Linux/UserPaths.h"
#include "Platform/System/Places.h"
#include "Platform/System/PrivateFiles.h"
#include "Tokwatch/Preferences/PlainSettings.h"
#include "Tokwatch/Preferences/WidgetPreferences.h"
#include "Tokwatch/Widget/Widget.h"

#include <QCommandLineParser>
#include <QDBusConnection>
#include <QGuiApplication>
#include <QProcessEnvironment>
#include <QTimer>

#include <chrono>
#include <filesystem>
#include <optional>

/// `tokwatch-widget`: the widget on the desktop. It is a process of its own so that it costs little
/// and does not go with the application, whose snapshot is all that it reads.
namespace tokwatch {
namespace {

/// Ours, the toolkit's, and a few to spare.
constexpr int threads = 8;
constexpr int descriptors = 24;

/// One that was just turned off ends within this time.
constexpr std::chrono::seconds patience{2};

/// Leaves out what a picture that nobody types into has no use for: graphics drivers, input
/// methods, and on the desktops of the other toolkit all of that, which the theme would come
/// through.
void stayLean() {
    qputenv("QT_XCB_GL_INTEGRATION", "none");
    qputenv("QT_WAYLAND_CLIENT_BUFFER_INTEGRATION", "none");
    qputenv("QT_IM_MODULE", "none");
    const QByteArray desktop = qgetenv("XDG_CURRENT_DESKTOP");
    QGuiApplication::setDesktopSettingsAware(desktop.contains("KDE"));
}

std::filesystem::path absolute(const QString& path) {
    return std::filesystem::absolute(path.toStdString()).lexically_normal();
}

/// The one whose numbers are shown: with the same places as this program.
void openTokwatch(const QStringList& places, const QProcessEnvironment& environment) {
    kivo::startDetached(ourProgram("tokwatch"), QStringList(places) << QStringLiteral("--open"),
                        environment);
}

int run(int argc, char** argv) {
    fillStandardDescriptors();
    ensureUTF8Locale();
    requireThreads(threads);
    requireDescriptors(descriptors);
    // What a click starts is typed into, and looks at the buses by itself.
    const QProcessEnvironment given = QProcessEnvironment::systemEnvironment();
    leaveOutMuteBuses();
    stayLean();
    std::optional<DisplayStart> start("tokwatch-widget");
    QGuiApplication application(argc, argv);
    start.reset();
    QGuiApplication::setApplicationName(QStringLiteral("Tokwatch"));
    QGuiApplication::setDesktopFileName(QStringLiteral("app.tokwatch"));
    // A menu that closes is no end.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    kivo::leaveOutOfSavedSessions(application);

    QCommandLineParser parser;
    const QCommandLineOption dataDirectory("data-dir", "Where Tokwatch keeps its data.", "DIR");
    parser.addHelpOption();
    const QCommandLineOption home("home", "Where the assistants' files are, for Tokwatch.", "DIR");
    parser.addOptions({dataDirectory, home});
    parser.process(application);
    UserPaths paths = UserPaths::current();
    QStringList places; // as they were said, for the application
    for (const QCommandLineOption& option : {dataDirectory, home})
        if (parser.isSet(option)) places << "--" + option.names().first() << parser.value(option);
    if (parser.isSet(dataDirectory)) paths.dataHome = absolute(parser.value(dataDirectory));

    WidgetPreferences preferences(settingsFile(widgetSettingsPath())); // makes the directory
    const FileDescriptor single =
        lockPrivately(settingsPath().parent_path() / "Widget.lock", patience);
    if (!single.isOpen()) return 0; // there is one already
    const TerminationSignals termination([] { QGuiApplication::quit(); });
    preferences.followFile();
    // A session that was saved brings it, and it may have been turned off since.
    if (application.isSessionRestored() && !preferences.shown.peek()) return 0;
    preferences.shown = true;
    const QPropertyNotifier end = preferences.shown.addNotifier([] { QGuiApplication::quit(); });

    const kivo::DesktopAppearance appearance(QDBusConnection::sessionBus());
    QtScheduler scheduler;
    Widget widget(preferences, scheduler, appearance,
                  {paths.snapshotDirectory(), settingsPath(), InotifyStream::open, systemNow,
                   Calendar::current, [places, given] { openTokwatch(places, given); }});
    widget.open();
    // Most of the code that has run by then will not run again, and the process stays for days.
    QTimer::singleShot(std::chrono::seconds{10}, giveBackMemory);
    const int status = QGuiApplication::exec();
    preferences.save();
    return status;
}

} // namespace
} // namespace tokwatch

int main(int argc, char** argv) {
    return tokwatch::runWindows("tokwatch-widget", [&] { return tokwatch::run(argc, argv); });
}
