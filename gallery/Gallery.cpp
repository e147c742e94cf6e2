// Draws the windows in their states, or compares them with the pictures that are kept:
//   Gallery DIRECTORY [NAME …]             draws into the directory
//   Gallery --compare KEPT DIRECTORY       the differences go to the directory; fails when there
//   are any
// Qt's own option -reverse draws them as where the desktop reads from the right.

#include "Tokwatch/Desktop/QmlRuntime.h"
#include "Tokwatch/Desktop/QmlWindow.h"
#include "gallery/PictureComparison.h"
#include "gallery/Scene.h"

#include <QCommandLineParser>
#include <QDir>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickView>
#include <QQuickWindow>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace tokwatch::testing {
namespace {

/// Four fifths of what the screen of a laptop leaves below its panel.
constexpr int greatestHeight = 696;

QImage picture(const Scene& scene, const kivo::Appearance& appearance, bool whole) {
    DemoWorld world(scene.home);
    if (scene.prepare) scene.prepare(world);
    world.settle();
    if (scene.draw) return scene.draw(world, appearance);
    kivo::Theme theme(appearance);
    QmlRuntime runtime(theme);
    const std::shared_ptr<QQmlEngine> engine = runtime.engine();
    const std::unique_ptr<QObject> view = scene.makeView(world);
    QQuickView window(engine.get(), nullptr);
    window.setResizeMode(QQuickView::SizeRootObjectToView);
    window.setInitialProperties({{"view", QVariant::fromValue(view.get())}});
    window.setSource(scene.source);
    QmlWindow::followLayoutDirection(window);
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

bool save(const QImage& image, const QString& file) {
    // Without the opaque alpha channel, and packed as small as it gets: they are kept in the
    // repository.
    constexpr int smallest = 0;
    if (!image.isNull() && image.convertToFormat(QImage::Format_RGB888).save(file, "PNG", smallest))
        return true;
    std::fprintf(stderr, "gallery: drawing %s failed\n", qPrintable(file));
    return false;
}

/// True when the picture is as it is kept.
bool matches(const QImage& fresh, const QString& kept, const QString& differenceFile) {
    const PictureComparison comparison = compare(QImage(kept), fresh);
    if (comparison.isAlike()) return true;
    std::fprintf(stderr, "gallery: %s differs in %.2f %% of its pixels%s; see %s\n",
                 qPrintable(kept), comparison.differing * 100,
                 comparison.isSameSize ? "" : " and in size", qPrintable(differenceFile));
    save(comparison.difference, differenceFile);
    return false;
}

struct Request {
    QString directory;
    QString kept; ///< empty when nothing is compared
    QStringList names;
    bool whole = false;
    bool highContrast = false;
};

int run(const Request& request) {
    struct Look {
        const char* suffix;
        kivo::Appearance appearance;
    };
    const Look looks[]{{"light", {}}, {"dark", {.dark = true}}};
    QDir().mkpath(request.directory);
    bool isWell = true;
    for (const Scene& scene : allScenes()) {
        if (!request.names.isEmpty() && !request.names.contains(scene.name)) continue;
        for (Look look : looks) {
            look.appearance.highContrast = request.highContrast;
            look.appearance.reducedMotion = true; // or it would be caught halfway
            const QString name = "/" + scene.name + "-" + look.suffix + ".png";
            const QImage fresh = picture(scene, look.appearance, request.whole);
            isWell &= request.kept.isEmpty()
                          ? save(fresh, request.directory + name)
                          : matches(fresh, request.kept + name, request.directory + name);
        }
    }
    return isWell ? 0 : 1;
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
    const QCommandLineOption compare("compare", "Compare with the pictures here.", "directory");
    const QCommandLineOption highContrast("high-contrast", "In the looks of high contrast.");
    parser.addOptions({whole, compare, highContrast});
    parser.addHelpOption();
    parser.process(application);
    QStringList names = parser.positionalArguments();
    if (names.isEmpty()) parser.showHelp(2);
    const QString directory = names.takeFirst();
    // The kept pictures are Debian 12's; other versions place letters half a pixel elsewhere.
    if (parser.isSet(compare) && !QByteArrayView(qVersion()).startsWith("6.4.")) {
        std::printf("skipped: the pictures were drawn with Qt 6.4, this is Qt %s\n", qVersion());
        return 77;
    }
    return tokwatch::testing::run(
        {directory, parser.value(compare), names, parser.isSet(whole), parser.isSet(highContrast)});
}
