#include "Tokwatch/Widget/WidgetPicture.h"
#include "TokwatchCore/Store/Snapshot.h"
#include "gallery/Scene.h"

#include <QGuiApplication>
#include <QPainter>

namespace tokwatch::testing {
namespace {

/// What the demo's application would write.
Snapshot snapshotOf(const DemoWorld& world) {
    return Snapshot::make(world.model->summary(), world.model->limits(),
                          world.preferences->enabledProviders(), world.time.now(),
                          world.model->calendar());
}

/// The widget with round corners, on a desktop.
QImage onDesktop(const WidgetDisplay& display, const kivo::Appearance& appearance) {
    constexpr int around = 12;
    const WidgetLooks looks{kivo::Palette::of(appearance),
                            kivo::TypeScale::of(QGuiApplication::font()),
                            QGuiApplication::isRightToLeft(), true};
    const QSize size = widgetPixels(display.size, looks.type);
    QImage widget(size, QImage::Format_ARGB32_Premultiplied);
    widget.fill(Qt::transparent);
    QPainter widgetPainter(&widget);
    paintWidget(widgetPainter, display, looks);
    QImage picture(size + QSize(2 * around, 2 * around), QImage::Format_RGB32);
    picture.fill(QColor(0x3a, 0x4a, 0x5a));
    QPainter(&picture).drawImage(QPoint(around, around), widget);
    return picture;
}

struct WidgetScene {
    const char* name;
    WidgetSize size;
    void (*prepare)(DemoWorld&) = nullptr;
    double hoursOld = 0;
    bool isWritten = true; ///< there is a snapshot
};

void knowUsualLimits(DemoWorld& world) {
    world.showUsualLimits();
}

/// As with assistants that publish none.
void knowNoLimits(DemoWorld& world) {
    world.model->apply({}, ProviderID::codex);
}

void runLow(DemoWorld& world) {
    ProviderLimits claude = world.claudeLimits();
    claude.windows[0].usedFraction = 0.95;
    claude.windows[0].resetsAt = world.time.now() + Seconds{2400};
    claude.windows[1].usedFraction = 0.81;
    world.model->apply(claude, ProviderID::claude);
    ProviderLimits codex;
    codex.status = ProviderStatus::signInNeeded;
    world.model->apply(codex, ProviderID::codex);
}

Scene widgetScene(const WidgetScene& shown) {
    Scene scene;
    scene.name = shown.name;
    if (shown.prepare) scene.prepare = shown.prepare;
    scene.draw = [shown](DemoWorld& world, const kivo::Appearance& appearance) {
        const auto snapshot = shown.isWritten ? std::optional(snapshotOf(world)) : std::nullopt;
        const Date now = world.time.now() + Seconds{shown.hoursOld * 3600};
        return onDesktop(WidgetDisplay::of(snapshot, shown.size, {}, now, world.model->calendar()),
                         appearance);
    };
    return scene;
}

} // namespace

std::vector<Scene> widgetScenes() {
    using enum WidgetSize;
    std::vector<Scene> scenes;
    for (const WidgetScene& each : {WidgetScene{"widget-small", small, knowUsualLimits},
                                    {"widget-medium", medium, knowUsualLimits},
                                    {"widget-large", large, knowUsualLimits},
                                    {"widget-small-critical", small, runLow},
                                    {"widget-medium-old", medium, knowUsualLimits, 3},
                                    {"widget-large-critical", large, runLow},
                                    {"widget-small-costs", small, knowNoLimits},
                                    {"widget-medium-costs", medium, knowNoLimits},
                                    {"widget-empty", medium, nullptr, 0, false}})
        scenes.push_back(widgetScene(each));
    return scenes;
}

} // namespace tokwatch::testing
