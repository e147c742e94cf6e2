#include "LoginItem.h"
#include "OnboardingView.h"
#include "Scene.h"
#include "SettingsView.h"

namespace tokwatch::testing {
namespace {

const QUrl settings(QStringLiteral("qrc:/qt/qml/Tokwatch/Settings/SettingsContent.qml"));
const QUrl onboarding(QStringLiteral("qrc:/qt/qml/Tokwatch/Onboarding/OnboardingContent.qml"));

std::unique_ptr<QObject> settingsView(DemoWorld& world, SettingsView::Page page) {
    static kivo::LoginItem loginItem("/nonexistent",
                                     {"app.tokwatch", "Tokwatch", "", {"/usr/bin/tokwatch"}, ""});
    const SettingsPlaces places{world.home / ".local/share/Tokwatch/usage.sqlite",
                                world.home / ".config/Tokwatch/Tokwatch.conf", loginItem,
                                [](const QUrl&) {}};
    auto view = std::make_unique<SettingsView>(*world.model, world.clock, places);
    view->setPage(static_cast<int>(page));
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

Scene onboardingScene(const QString& name, int step) {
    return {name,
            onboarding,
            DemoWorld::Home::demo,
            {},
            [step](DemoWorld& world) {
                auto view =
                    std::make_unique<OnboardingView>(*world.preferences, world.model->locations());
                for (int at = 0; at < step; ++at)
                    view->next();
                return view;
            },
            {},
            {500, 400}};
}

} // namespace

std::vector<Scene> windowScenes() {
    using enum SettingsView::Page;
    std::vector<Scene> scenes{settingsScene("general", general), settingsScene("menu-bar", menuBar),
                              settingsScene("providers", providers),
                              settingsScene("privacy", privacy), settingsScene("about", about)};
    for (int step = 0; step < 4; ++step)
        scenes.push_back(onboardingScene(QString("welcome-%1").arg(step + 1), step));
    return scenes;
}

} // namespace tokwatch::testing
