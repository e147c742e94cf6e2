// A status item without the application behind it, for trying it in real status areas. Reads
// commands from standard input, one a line, and tells on standard output what it was asked to do.
//
//   title SEVERITY PROVIDER TEXT…    e.g. "title warning claude 42% · 3h 5m"; "-" for none
//   desktop dark|light

#include "Platform/Linux/QtScheduler.h"
#include "Tokwatch/StatusItem/MeterStatusItem.h"

#include <QGuiApplication>
#include <QSocketNotifier>
#include <QStandardPaths>

#include <iostream>
#include <sstream>
#include <string>

using namespace tokwatch;

namespace {

void tell(const std::string& event) {
    std::cout << event << std::endl;
}

/// Three limits of two providers.
std::vector<LimitStep> steps() {
    const auto step = [](ProviderID provider, const char* window, const std::string& text,
                         Severity severity, int percent) {
        return LimitStep{
            provider, window, percent == 42, {text, provider, severity, text, false, percent}};
    };
    using enum ProviderID;
    return {step(claude, "session", "Session 42% · 3h 5m", Severity::normal, 42),
            step(claude, "weekly", "Weekly 66% · 2d 4h", Severity::normal, 66),
            step(codex, "session", "Session 8% · 41m", Severity::critical, 8)};
}

Severity severityNamed(const std::string& name) {
    if (name == "warning") return Severity::warning;
    if (name == "critical") return Severity::critical;
    return Severity::normal;
}

StatusContent contentFrom(std::istream& words) {
    std::string severity, provider, text;
    words >> severity >> provider >> std::ws;
    std::getline(words, text);
    StatusTitle title;
    title.severity = severityNamed(severity);
    title.provider = providerFromRawValue(provider);
    if (!text.empty() && text != "-") title.text = text;
    if (title.text && text.find('%') != std::string::npos)
        title.percentLeft = std::atoi(text.c_str());
    title.tooltip = "Claude · Session 42% left · resets in 3h 5m\nCodex · Weekly <8%> & more";
    return {title, steps()};
}

} // namespace

int main(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    application.setQuitOnLastWindowClosed(false);
    QtScheduler scheduler;
    const StatusActions actions{
        [](QPoint at) { tell("click " + std::to_string(at.x()) + " " + std::to_string(at.y())); },
        [] { tell("refresh"); }, [] { tell("menu settings"); },
        [] {
            tell("menu quit");
            QGuiApplication::quit();
        }};
    const QString icons =
        QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + "/tokwatch/icons";
    MeterStatusItem item({QDBusConnection::sessionBus(), scheduler, systemNow, icons.toStdString()},
                         actions);
    item.onHostChanged = [&] { tell(item.hasHost() ? "host" : "no host"); };
    item.onContextMenu = [](QPoint) { tell("context menu"); };
    std::istringstream start("normal claude 42% · 3h 5m");
    item.apply(contentFrom(start));

    QSocketNotifier input(0, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, [&] {
        std::string line;
        if (!std::getline(std::cin, line)) return input.setEnabled(false);
        std::istringstream words(line);
        std::string command;
        words >> command;
        if (command == "title") item.apply(contentFrom(words));
        if (command == "desktop") {
            words >> command;
            item.setDesktopDark(command == "dark");
        }
        tell("done");
    });
    return QGuiApplication::exec();
}
