#include "KivoLaunch/LoginItem.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Views/FakeHotKey.h"
#include "Tokwatch/DesktopPreferences/ChosenHotKey.h"
#include "Tokwatch/DesktopPreferences/DesktopPreferences.h"
#include "Tokwatch/Preferences/AlertPreferences.h"
#include "Tokwatch/Preferences/WidgetPreferences.h"
#include "Tokwatch/Updates/SoftwareUpdates.h"
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

/// Settings of a kind, in a file that goes with the pictures' end.
template<typename Preferences>
Preferences& settingsNamed(const char* name) {
    static const TemporaryDirectory directory;
    static Preferences preferences(settingsFile(directory / name));
    return preferences;
}

AlertPreferences& alertPreferences() {
    return settingsNamed<AlertPreferences>("Notifications.conf");
}

DesktopPreferences& desktopPreferences() {
    return settingsNamed<DesktopPreferences>("Desktop.conf");
}

ChosenHotKey& hotKey() {
    static ChosenHotKey chosen(desktopPreferences(), FakeHotKey::make);
    desktopPreferences().hotKey.assignText("Ctrl+Alt+T");
    return chosen;
}

WidgetPreferences& widgetPreferences() {
    return settingsNamed<WidgetPreferences>("Widget.conf");
}

std::unique_ptr<SettingsView> settingsView(DemoWorld& world, SettingsView::Page page,
                                           SoftwareUpdates* updates = nullptr) {
    const SettingsPlaces places{world.home / ".local/share/Tokwatch/usage.sqlite",
                                world.home / ".config/Tokwatch/Tokwatch.conf",
                                alertPreferences(),
                                desktopPreferences(),
                                widgetPreferences(),
                                hotKey(),
                                QStringLiteral("tokwatch"),
                                loginItem(),
                                [](const QUrl&) {},
                                updates};
    auto view = std::make_unique<SettingsView>(*world.model, world.clock, places);
    view->setPage(page);
    return view;
}

// What a feed told at noon of the day that the pictures show, and its key, whose other half is
// gone.
constexpr const char* feedKey = "OHWF3R4A3ivp6qQlHg1Wg34f8vOIrWi2kI+9QrS8rFk=";
constexpr const char* manifest =
    R"({"version":"1.2.0","date":"2026-03-12T12:00:00Z",)"
    R"("notes":"Reads the files of two more assistants.\nForecasts look at weekends.",)"
    R"("page":"https://tokwatch.example/news"})";
constexpr const char* manifestSignature =
    "T5Z8bx3rd9aAmkQFjZ/5zf2fhm+0vCBZJtRj1fxkLIvR+jZGmEqJ8jmuGYxTxecOldNXYba+NH9H3Clw5/f8Cw==";

/// The settings of somebody who agreed and was told that.
std::filesystem::path updateSettings(DemoWorld& world) {
    const auto coded = [](const char* text) { return QByteArray(text).toBase64().toStdString(); };
    world.home.write("Updates.conf",
                     "agreed=true\nlastCheck=" + std::to_string(unixSeconds(world.time.now())) +
                         "\nmanifest=" + coded(manifest) +
                         "\nsignature=" + coded(manifestSignature) + "\n");
    return world.home / "Updates.conf";
}

struct KnownUpdates : QObject {
    explicit KnownUpdates(DemoWorld& world)
        : updates(*kivo::makeUpdateFeed("https://tokwatch.example/feed.json", feedKey, "1.0.0"),
                  {updateSettings(world), [](const QUrl&, const auto&) {}, world.time.clock(),
                   world.time}) {}
    SoftwareUpdates updates;
};

/// The page with what is new, which lives as long as the view.
Scene updatesScene() {
    return {QStringLiteral("settings-updates"),
            settings,
            DemoWorld::Home::demo,
            {},
            [](DemoWorld& world) -> std::unique_ptr<QObject> {
                auto known = std::make_unique<KnownUpdates>(world);
                auto view = settingsView(world, SettingsView::Page::about, &known->updates);
                known.release()->setParent(view.get());
                return view;
            },
            {},
            {720, 520}};
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
            settingsScene("widget", widget),
            settingsScene("providers", providers),
            settingsScene("privacy", privacy),
            settingsScene("about", about),
            updatesScene(),
            welcomeScene("welcome", DemoWorld::Home::demo),
            welcomeScene("welcome-empty", DemoWorld::Home::empty)};
}

} // namespace tokwatch::testing
