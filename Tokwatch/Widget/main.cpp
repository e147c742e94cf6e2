#include "KivoLooks/DesktopAppearance.h"
#include "Platform/Linux/InotifyStream.h"
#include "Platform/Linux/MuteSessionBus.h"
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
#include <QProcess>
#include <QSettings>

#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>

/// `tokwatch-widget`: the widget on the desktop. It is a process of its own so that it costs little
/// and does not go with the application, whose snapshot is all that it reads.
namespace tokwatch {
namespace {

/// One that was just turned off ends within this time.
constexpr std::chrono::seconds patience{2};

/// Leaves out what a picture that nobody types into has no use for: graphics drivers, input
/// methods, and on the desktops of the other toolkit all of that, which the theme would come
/// through.
void stayLean() {
    qputenv("QT_XCB_GL_INTEGRATION", "none");
    qputenv("QT_IM_MODULE", "none");
    const QByteArray desktop = qgetenv("XDG_CURRENT_DESKTOP");
    QGuiApplication::setDesktopSettingsAware(desktop.contains("KDE"));
}

std::optional<std::filesystem::path> snapshotDirectory(const QCommandLineParser& parser,
                                                       const QCommandLineOption& dataDirectory) {
    UserPaths paths = UserPaths::current();
    if (parser.isSet(dataDirectory))
        paths.dataHome =
            std::filesystem::absolute(parser.value(dataDirectory).toStdString()).lexically_normal();
    return paths.snapshotDirectory();
}

void openTokwatch() {
    QProcess::startDetached(QString::fromStdString(ourProgram("tokwatch").string()), {});
}

int run(int argc, char** argv) {
    ensureUTF8Locale();
    leaveOutMuteSessionBus();
    stayLean();
    QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("Tokwatch"));
    QGuiApplication::setDesktopFileName(QStringLiteral("app.tokwatch"));
    // A menu that closes is no end.
    QGuiApplication::setQuitOnLastWindowClosed(false);

    QCommandLineParser parser;
    const QCommandLineOption dataDirectory("data-dir", "Where Tokwatch keeps its data.", "DIR");
    parser.addHelpOption();
    parser.addOption(dataDirectory);
    parser.process(application);

    const std::unique_ptr<QSettings> settings = settingsFile(widgetSettingsPath());
    const FileDescriptor single =
        lockPrivately(settingsPath().parent_path() / "Widget.lock", patience);
    if (!single.isOpen()) return 0; // there is one already
    WidgetPreferences preferences(*settings);
    preferences.followFile();
    preferences.shown = true;
    const QPropertyNotifier end = preferences.shown.addNotifier([] { QGuiApplication::quit(); });

    const kivo::DesktopAppearance appearance(QDBusConnection::sessionBus());
    QtScheduler scheduler;
    Widget widget(preferences, scheduler, appearance,
                  {snapshotDirectory(parser, dataDirectory), settingsPath(), InotifyStream::open,
                   systemNow, Calendar::current, openTokwatch});
    widget.open();
    const TerminationSignals termination([] { QGuiApplication::quit(); });
    return QGuiApplication::exec();
}

} // namespace
} // namespace tokwatch

int main(int argc, char** argv) {
    try {
        return tokwatch::run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tokwatch-widget: starting failed: %s\n", error.what());
        return 1;
    }
}
