#include "Tests/App/ModelWorld.h"
#include "Tokwatch/Views/Common/ViewClock.h"
#include "Tokwatch/Views/Popover/PopoverView.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QQmlContext>
#include <QQmlEngine>
#include <QtQml/QQmlExtensionPlugin>
#include <QtQuickTest>

Q_IMPORT_QML_PLUGIN(Kivo_ThemePlugin)
Q_IMPORT_QML_PLUGIN(Tokwatch_CommonPlugin)
Q_IMPORT_QML_PLUGIN(Tokwatch_PopoverPlugin)

namespace tokwatch::testing {

/// What the QML tests work with: "world".
class QuickWorld : public QObject {
    Q_OBJECT
    Q_PROPERTY(tokwatch::PopoverView* popover READ popoverView CONSTANT)
    Q_PROPERTY(tokwatch::StatsView* stats READ statsView CONSTANT)
    Q_PROPERTY(tokwatch::ModelsView* models READ modelsView CONSTANT)
  public:
    QuickWorld() {
        world.makeModel();
        popover.emplace(*world.model, clock);
    }

    PopoverView* popoverView() { return &*popover; }
    StatsView* statsView() { return popover->stats(); }
    ModelsView* modelsView() { return popover->models(); }

    /// One event of each model, the first of them the costliest.
    Q_INVOKABLE void useModels(int count) {
        std::vector<UsageEvent> events;
        for (int i = 0; i < count; ++i) {
            UsageEvent& event = events.emplace_back();
            event.model = "model-" + std::to_string(i);
            event.dedupKey = event.sessionID = event.model;
            event.timestamp = *parseISO8601("2026-11-24T10:00:00Z");
            event.tokens.output = 1000;
            event.reportedCostUSD = count - i;
        }
        use(events);
    }
    Q_INVOKABLE void useOn(const QString& day, double costUSD) {
        UsageEvent event;
        event.provider = ProviderID::codex;
        event.model = "gpt";
        event.dedupKey = event.sessionID = day.toStdString();
        event.timestamp = *parseISO8601(day.toStdString() + "T10:00:00Z");
        event.tokens.output = 1000;
        event.reportedCostUSD = costUSD;
        use({event});
    }
    Q_INVOKABLE void settle() { world.settle(); }
    Q_INVOKABLE QString clipboard() const { return QGuiApplication::clipboard()->text(); }

  private:
    void use(const std::vector<UsageEvent>& events) {
        world.store->ingest(events, Calendar::utc());
        world.model->publish();
        world.settle();
    }

    ModelWorld world{*parseISO8601("2026-11-24T12:00:00Z")};
    ViewClock clock{world.time.clock()};
    std::optional<PopoverView> popover;
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

QUICK_TEST_MAIN_WITH_SETUP(popover, tokwatch::testing::Setup)

#include "PopoverQuickTests.moc"
