// Draws pictures of the windows into a directory: Gallery DIRECTORY [NAME …]

#include "QmlRuntime.h"
#include "Scene.h"

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickView>
#include <QQuickWindow>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace tokwatch::testing {
namespace {

/// Four fifths of what a small laptop's screen leaves below the panel.
constexpr int greatestHeight = 592;

struct Look {
    QString suffix;
    kivo::Appearance appearance;
};

QImage picture(const Scene& scene, const kivo::Appearance& appearance, bool whole) {
    DemoWorld world(scene.home);
    if (scene.prepare) scene.prepare(world);
    world.settle();
    kivo::Theme theme(appearance);
    QmlRuntime runtime(theme);
    const std::shared_ptr<QQmlEngine> engine = runtime.engine();
    const std::unique_ptr<QObject> view = scene.makeView(world);
    QQuickView window(engine.get(), nullptr);
    window.setResizeMode(QQuickView::SizeRootObjectToView);
    window.setInitialProperties({{"view", QVariant::fromValue(view.get())}});
    window.setSource(scene.source);
    QQuickItem* root = window.rootObject();
    if (root == nullptr) {
        for (const QQmlError& error : window.errors())
            std::fprintf(stderr, "%s\n", qPrintable(error.toString()));
        return {};
    }
    const auto fit = [&] {
        const int natural = static_cast<int>(std::ceil(root->implicitHeight()));
        const int height = scene.size.height() > 0 ? scene.size.height()
                           : whole                 ? natural
                                                   : std::min(natural, greatestHeight);
        window.resize(scene.size.width(), height);
    };
    fit();
    window.show();
    world.settle();
    fit();
    world.settle();
    if (scene.touch) {
        scene.touch(*root);
        world.settle();
    }
    return window.grabWindow();
}

int draw(const QString& directory, const QStringList& wanted, bool whole) {
    const Look looks[]{{"light", {}}, {"dark", {.dark = true}}};
    std::vector<Scene> scenes = popoverScenes();
    for (const Scene& scene : scenes) {
        if (!wanted.isEmpty() && !wanted.contains(scene.name)) continue;
        for (const Look& look : looks) {
            const QString file = directory + "/" + scene.name + "-" + look.suffix + ".png";
            const QImage image = picture(scene, look.appearance, whole);
            if (image.isNull() || !image.save(file)) {
                std::fprintf(stderr, "gallery: drawing %s failed\n", qPrintable(file));
                return 1;
            }
        }
    }
    return 0;
}

} // namespace
} // namespace tokwatch::testing

int main(int argc, char** argv) {
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QGuiApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addPositionalArgument("directory", "Where the pictures go.");
    parser.addPositionalArgument("name", "Only these.", "[name …]");
    const QCommandLineOption whole("whole", "As high as the content is.");
    parser.addOption(whole);
    parser.process(application);
    QStringList names = parser.positionalArguments();
    if (names.isEmpty()) parser.showHelp(2);
    const QString directory = names.takeFirst();
    return tokwatch::testing::draw(directory, names, parser.isSet(whole));
}
