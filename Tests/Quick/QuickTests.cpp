#include "Tests/Views/ViewWorld.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Views/Onboarding/OnboardingView.h"
#include "Tokwatch/Views/Popover/PopoverView.h"
#include "Tokwatch/Views/Settings/SettingsView.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QQmlContext>
#include <QQmlEngine>
#include <QtQuickTest>

namespace tokwatch::testing {

/// What QML tests work with, as "world": a model on a computer with two assistants.
class QuickWorld : public QObject {
    Q_OBJECT
  public:
    explicit QuickWorld(QQmlContext& context) {
        context.setContextProperty(QStringLiteral("world"), this);
        context.setContextProperty(QStringLiteral("popoverView"), &popover);
        context.setContextProperty(QStringLiteral("settingsView"), &settings);
        context.setContextProperty(QStringLiteral("welcomeView"), &welcome);
    }

    /// Models of which each costs a dollar less than the one before it, the last one so much.
    Q_INVOKABLE void use(const QString& provider, const QString& day, double costUSD,
                         int models = 1) {
        std::vector<UsageEvent> events;
        for (int i = 0; i < models; ++i)
            events.push_back(ViewWorld::event(
                day.toStdString() + "T10:00:00Z", costUSD + models - 1 - i,
                "model-" + std::to_string(i), *providerFromRawValue(provider.toStdString())));
        world.use(events);
    }
    Q_INVOKABLE void knowLimits() { world.knowLimits(ProviderID::claude, 0.5, 0.75); }
    /// Of a session that runs out before its reset.
    Q_INVOKABLE void knowHistory() {
        ProviderLimits limits = someLimits(world.time.now(), 0.3);
        limits.windows[0].resetsAt = world.time.now() + Seconds{10'800};
        for (const double ago : {3600.0, 1800.0, 0.0}) {
            limits.fetchedAt = world.time.now() - Seconds{ago};
            limits.windows[0].usedFraction += 0.1;
            world.history->record(limits, ProviderID::claude);
        }
        world.model->apply(limits, ProviderID::claude);
        world.settle();
    }
    /// A setting as the command line prints it.
    Q_INVOKABLE QString preference(const QString& key) const {
        return QString::fromStdString(setting(key).text());
    }
    Q_INVOKABLE void setPreference(const QString& key, const QString& value) {
        setting(key).assignText(value.toStdString());
        world.settle();
    }
    Q_INVOKABLE void blockAutostart() { world.home.write(".config/autostart", "no directory"); }
    Q_INVOKABLE QString clipboard() const { return QGuiApplication::clipboard()->text(); }
    Q_INVOKABLE bool hasPictureInClipboard() const {
        return !QGuiApplication::clipboard()->image().isNull();
    }
    Q_INVOKABLE void passAMinute() { world.pass(Seconds{60}); }
    Q_INVOKABLE void settle() { world.settle(); }

  private:
    AnySetting& setting(const QString& key) const {
        if (AnySetting* found = world.preferences->named(key.toStdString())) return *found;
        if (AnySetting* found = world.alertPreferences.named(key.toStdString())) return *found;
        if (AnySetting* found = world.desktopPreferences.named(key.toStdString())) return *found;
        return *world.widgetPreferences.named(key.toStdString());
    }

    ViewWorld world{".claude/projects/a/b.jsonl", ".grok/sessions/a"};
    ShownRange range;
    PopoverView popover{*world.model, world.clock, range};
    SettingsView settings{*world.model, world.clock, world.places};
    OnboardingView welcome{*world.preferences, ProviderLocations{world.home.path()},
                           world.loginItem};
};

/// A new world for each file of tests.
class Setup : public QObject {
    Q_OBJECT
  public slots:
    void qmlEngineAvailable(QQmlEngine* engine) {
        engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
        world = std::make_unique<QuickWorld>(*engine->rootContext());
    }
    void cleanupTestCase() { world.reset(); }

  private:
    std::unique_ptr<QuickWorld> world;
};

} // namespace tokwatch::testing

QUICK_TEST_MAIN_WITH_SETUP(windows, tokwatch::testing::Setup)

#include "QuickTests.moc"
