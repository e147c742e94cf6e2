#include "KivoLaunch/LoginItem.h"
#include "Tests/Views/FakeHotKey.h"
#include "Tokwatch/DesktopPreferences/ChosenHotKey.h"
#include "Tokwatch/DesktopPreferences/DesktopPreferences.h"
#include "Tokwatch/Preferences/AlertPreferences.h"
#include "Tokwatch/Views/Onboarding/OnboardingView.h"
#include "Tokwatch/Views/Settings/SettingsView.h"
#include "gallery/Scene.h"

namespace tokwatch::testing {
namespace {

const QUrl settings(QStringLiteral("qrc:/qt/qml/Tokwatch/Settings/SettingsContent.qml"));
const QUrl onboarding(QStringLiteral("qrc:/qt/qml/Tokwatch/Onboarding/OnboardingContent.qml"));

kivo::LoginItem& loginItem() {
    static kivo::LoginItem item("/nonexistent",
                                {"app.tokwatch", "Tokwatch", "", {"/usr/bin/tokwatch"}, ""});
    return item;
}

AlertPreferences& alertPreferences() {
    static const std::unique_ptr<QSettings> nobodys = settingsOfNobody();
    static AlertPreferences preferences(*nobodys);
    return preferences;
}

DesktopPreferences& desktopPreferences() {
    static const std::unique_ptr<QSettings> nobodys = settingsOfNobody();
    static DesktopPreferences preferences(*nobodys);
    return preferences;
}

ChosenHotKey& hotKey() {
    static ChosenHotKey chosen(desktopPreferences(), FakeHotKey::make);
    desktopPreferences().hotKey.assignText("Ctrl+Alt+T");
    return chosen;
}

std::unique_ptr<QObject> settingsView(DemoWorld& world, SettingsView::Page page) {
    const SettingsPlaces places{world.home / ".local/share/Tokwatch/usage.sqlite",
                                world.home / ".config/Tokwatch/Tokwatch.conf",
                                alertPreferences(),
                                desktopPreferences(),
                                hotKey(),
                                QStringLiteral("tokwatch"),
                                loginItem(),
                                [](const QUrl&) {}};
    auto view = std::make_unique<SettingsView>(*world.model, world.clock, places);
    view->setPage(page);
    return view;
}

Scene settingsScene(const char* name, SettingsView::Page page) {
    return {QStringLiteral("settings-") + name,
            settings,
            DemoWorld::Home::demo,
            [](DemoWorld& world) { world.showUsualLimits(); },
            [page](DemoWorld& world) { return settingsView(world, page); },
            {},
            {720, 520}};
}

Scene welcomeScene(const char* name, DemoWorld::Home home) {
    return {name,
            onboarding,
            home,
            {},
            [](DemoWorld& world) {
                return std::make_unique<OnboardingView>(*world.preferences,
                                                        world.model->locations(), loginItem());
            },
            {},
            {500, 0}};
}

} // namespace

std::vector<Scene> windowScenes() {
    using enum SettingsView::Page;
    return {settingsScene("general", general),
            settingsScene("panel", menuBar),
            settingsScene("notifications", alerts),
            settingsScene("providers", providers),
            settingsScene("privacy", privacy),
            settingsScene("about", about),
            welcomeScene("welcome", DemoWorld::Home::demo),
            welcomeScene("welcome-empty", DemoWorld::Home::empty)};
}

} // namespace tokwatch::testing
