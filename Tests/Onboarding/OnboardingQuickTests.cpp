#include "KivoLaunch/LoginItem.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Views/Onboarding/OnboardingView.h"

#include <QQmlContext>
#include <QQmlEngine>
#include <QSettings>
#include <QtQml/QQmlExtensionPlugin>
#include <QtQuickTest>

Q_IMPORT_QML_PLUGIN(Kivo_ThemePlugin)
Q_IMPORT_QML_PLUGIN(Tokwatch_CommonPlugin)
Q_IMPORT_QML_PLUGIN(Tokwatch_OnboardingPlugin)

namespace tokwatch::testing {

/// A home with two assistants, whose welcome the QML tests know as "welcome".
class Setup : public QObject {
    Q_OBJECT
  public slots:
    void qmlEngineAvailable(QQmlEngine* engine) {
        home.write(".claude/projects/a", "");
        home.write(".grok/sessions/a", "");
        view.emplace(preferences, ProviderLocations{home.path()}, loginItem);
        engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
        engine->rootContext()->setContextProperty(QStringLiteral("welcome"), &*view);
    }

  private:
    TemporaryDirectory home;
    std::unique_ptr<QSettings> settings = settingsFile(home / "settings.conf");
    Preferences preferences{*settings};
    kivo::LoginItem loginItem{home / "autostart", {"app", "App", "", {"/bin/app"}, "app"}};
    std::optional<OnboardingView> view;
};

} // namespace tokwatch::testing

QUICK_TEST_MAIN_WITH_SETUP(onboarding, tokwatch::testing::Setup)

#include "OnboardingQuickTests.moc"
