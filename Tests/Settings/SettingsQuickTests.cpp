#include "Tests/Settings/SettingsWorld.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Views/Settings/SettingsView.h"

#include <QQmlContext>
#include <QQmlEngine>
#include <QtQml/QQmlExtensionPlugin>
#include <QtQuickTest>

Q_IMPORT_QML_PLUGIN(Kivo_ThemePlugin)
Q_IMPORT_QML_PLUGIN(Kivo_SettingsPlugin)
Q_IMPORT_QML_PLUGIN(Tokwatch_CommonPlugin)
Q_IMPORT_QML_PLUGIN(Tokwatch_SettingsPlugin)

namespace tokwatch::testing {

/// What the QML tests work with: "world".
class QuickWorld : public QObject {
    Q_OBJECT
    Q_PROPERTY(tokwatch::SettingsView* view READ view CONSTANT)
  public:
    QuickWorld() {
        world.home.write(".claude/projects/a/b.jsonl", "");
        world.knowLimits(ProviderID::claude, 0.5, 0.75);
        settings.emplace(*world.model, world.clock, world.places);
    }

    SettingsView* view() { return &*settings; }

    /// A setting as the command line prints it.
    Q_INVOKABLE QString preference(const QString& key) const {
        return QString::fromStdString(world.preferences->named(key.toStdString())->text());
    }
    Q_INVOKABLE void setPreference(const QString& key, const QString& value) {
        world.preferences->named(key.toStdString())->assignText(value.toStdString());
        world.settle();
    }
    Q_INVOKABLE void blockAutostart() { world.home.write(".config/autostart", "no directory"); }
    Q_INVOKABLE QString lastOpened() const {
        return world.opened.empty() ? QString() : QString::fromStdString(world.opened.back());
    }
    Q_INVOKABLE void settle() { world.settle(); }

  private:
    SettingsWorld world;
    std::optional<SettingsView> settings;
};

/// A new world for each file of tests.
class Setup : public QObject {
    Q_OBJECT
  public slots:
    void qmlEngineAvailable(QQmlEngine* engine) {
        world = std::make_unique<QuickWorld>();
        engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
        engine->rootContext()->setContextProperty(QStringLiteral("world"), world.get());
    }
    void cleanupTestCase() { world.reset(); }

  private:
    std::unique_ptr<QuickWorld> world;
};

} // namespace tokwatch::testing

QUICK_TEST_MAIN_WITH_SETUP(settings, tokwatch::testing::Setup)

#include "SettingsQuickTests.moc"
