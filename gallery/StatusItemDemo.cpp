// A status item without the application behind it, for trying it in real status areas. Reads
// commands from standard input, one a line, and tells on standard output what it was asked to do.
//
//   title SEVERITY PROVIDER TEXT…    e.g. "title warning claude 42% · 3h 5m"; "-" for none
//   desktop dark|light

#include "Platform/Linux/QtScheduler.h"
#include "Tokwatch/StatusItem/MeterStatusItem.h"
#include "Tokwatch/StatusItem/StatusMenu.h"

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
class DemoSource final : public StatusItemSource {
  public:
    std::vector<WindowChoice> choices() const override {
        return {{ProviderID::claude, "session", "Session"},
                {ProviderID::claude, "weekly", "Weekly"},
                {ProviderID::codex, "session", "Session"}};
    }
    std::optional<WindowChoice> usualChoice() const override { return choices().front(); }
    StatusTitle title(const WindowChoice& choice) const override {
        const bool isWeekly = choice.windowID == "weekly";
        const bool isCodex = choice.provider == ProviderID::codex;
        return {isCodex    ? "8% · 41m"
                : isWeekly ? "66% · 2d 4h"
                           : "42% · 3h 5m",
                choice.provider,
                isCodex ? Severity::critical : Severity::normal,
                "Chosen",
                false,
                isCodex    ? 8
                : isWeekly ? 66
                           : 42};
    }
    std::string line(const WindowChoice& choice) const override {
        return choice.label + " " + *title(choice).text;
    }
    void refresh() override { tell("refresh"); }
};

Severity severityNamed(const std::string& name) {
    if (name == "warning") return Severity::warning;
    if (name == "critical") return Severity::critical;
    return Severity::normal;
}

StatusTitle titleFrom(std::istream& words) {
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
    return title;
}

} // namespace

int main(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    application.setQuitOnLastWindowClosed(false);
    QtScheduler scheduler;
    DemoSource source;
    const StatusMenuActions actions{[] { tell("menu refresh"); },
                                    [] { tell("menu settings"); },
                                    {},
                                    [] {
                                        tell("menu quit");
                                        QGuiApplication::quit();
                                    }};
    const QString icons =
        QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + "/tokwatch/icons";
    MeterStatusItem item(
        {QDBusConnection::sessionBus(), scheduler, systemNow, icons.toStdString()}, source,
        [](QPoint at) { tell("click " + std::to_string(at.x()) + " " + std::to_string(at.y())); },
        [&] { return statusMenu(actions); });
    item.onHostChanged = [&] { tell(item.hasHost() ? "host" : "no host"); };
    item.onContextMenu = [](QPoint) { tell("context menu"); };
    std::istringstream start("normal claude 42% · 3h 5m");
    item.apply(titleFrom(start));

    QSocketNotifier input(0, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, [&] {
        std::string line;
        if (!std::getline(std::cin, line)) return input.setEnabled(false);
        std::istringstream words(line);
        std::string command;
        words >> command;
        if (command == "title") item.apply(titleFrom(words));
        if (command == "desktop") {
            words >> command;
            item.setDesktopDark(command == "dark");
        }
        tell("done");
    });
    return QGuiApplication::exec();
}
