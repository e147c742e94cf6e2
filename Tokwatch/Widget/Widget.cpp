#include "Tokwatch/Widget/Widget.h"

#include "KivoLooks/ToneChoice.h"
#include "KivoPanel/SavedFrame.h"
#include "Tokwatch/Preferences/PlainSettings.h"
#include "Tokwatch/Preferences/SettingsStorage.h"
#include "Tokwatch/Widget/WidgetMenu.h"
#include "Tokwatch/Widget/WidgetPlace.h"

#include <QGuiApplication>
#include <QMetaObject>
#include <QScreen>

#include <chrono>
#include <cmath>

namespace tokwatch {
namespace {

/// A replaced file is two events or more.
constexpr Seconds fileLatency{0.1};
/// Screens come, go and change in several steps.
constexpr std::chrono::milliseconds screensLatency{300};

kivo::SavedFrames savedFrames(const WidgetPreferences& preferences) {
    return kivo::savedFramesFrom(QString::fromStdString(preferences.frames()));
}

/// Of the windows' settings the one that the widget obeys; their room knows the window system.
kivo::ToneChoice chosenTone(const std::filesystem::path& file) {
    SettingsStorage settings(file);
    if (!settings.load()) return kivo::ToneChoice::desktop;
    const QString tone = settings.value(QStringLiteral("theme")).toString();
    if (tone == QLatin1String("dark")) return kivo::ToneChoice::dark;
    return tone == QLatin1String("light") ? kivo::ToneChoice::light : kivo::ToneChoice::desktop;
}

} // namespace

Widget::Widget(WidgetPreferences& widgetPreferences, Scheduler& timers,
               const kivo::DesktopAppearance& desktop, WidgetSurroundings given)
    : preferences(widgetPreferences), scheduler(timers), appearance(desktop),
      surroundings(std::move(given)), snapshots(surroundings.snapshotDirectory),
      type(kivo::TypeScale::of(QGuiApplication::font())), window(looksNow()) {
    screensSettling.setSingleShot(true);
    screensSettling.setInterval(screensLatency);
    connect(&screensSettling, &QTimer::timeout, this, &Widget::screensChanged);
    const auto setLooks = [this] { window.setLooks(looksNow()); };
    connect(&appearance, &kivo::DesktopAppearance::changed, this, setLooks);
    connect(&compositing, &kivo::Compositing::changed, this, setLooks);
    connect(&window, &WidgetWindow::moved, this, &Widget::remember);
    connect(&window, &WidgetWindow::menuRequested, this, &Widget::openMenu);
    connect(&window, &WidgetWindow::clicked, this, [this] { surroundings.openTokwatch(); });
    sizeNotifier = preferences.size.addNotifier([this] { sizeChanged(); });
}

Widget::~Widget() = default;

void Widget::open() {
    const QSize size = widgetPixels(preferences.size, type);
    const QList<kivo::ScreenArea> screens = kivo::presentScreens();
    const QRect left = placeLeft(screens);
    window.setPlace(left.isNull() ? firstPlace(size, screens) : resizedPlace(left, size, screens));
    // How large it is may have been chosen since it was last there.
    if (!left.isNull() && widgetSizeOf(left.size(), type) != preferences.size) remember();
    preferences.setStaysWhereDragged(window.onDesktop().isPlaceKnown());
    look();
    window.show();
    followScreens();
    followFiles();
}

WidgetLooks Widget::looksNow() const {
    const auto tone = chosenTone(surroundings.settingsFile.parent_path() / "Desktop.conf");
    return {kivo::Palette::of(kivo::inTone(appearance.current(), tone)), type,
            QGuiApplication::isRightToLeft(), compositing.isActive()};
}

// What it shows

void Widget::look() {
    window.setLooks(looksNow());
    const Thresholds thresholds = PlainSettings::read(surroundings.settingsFile).thresholds;
    window.present(WidgetDisplay::of(snapshots.read(), preferences.size, thresholds,
                                     surroundings.now(), surroundings.calendar()));
    lookAtNextMinute();
}

/// Resets mostly fall on full minutes.
void Widget::lookAtNextMinute() {
    constexpr double minute = 60;
    const double past = std::fmod(unixSeconds(surroundings.now()), minute);
    nextMinute = scheduler.after(Seconds{minute - past}, [this] { look(); });
}

void Widget::followFiles() {
    std::vector<std::string> directories{surroundings.settingsFile.parent_path().string()};
    if (surroundings.snapshotDirectory)
        directories.push_back(surroundings.snapshotDirectory->string());
    // Where nothing can be watched, the look at each minute has to do.
    files = surroundings.openFileEvents(directories, fileLatency,
                                        [this](const std::vector<FileEvent>&) {
                                            QMetaObject::invokeMethod(
                                                this, [this] { look(); }, Qt::QueuedConnection);
                                        });
}

// Where it is

void Widget::followScreens() {
    const auto settle = [this] { screensSettling.start(); };
    const auto follow = [this, settle](const QScreen* screen) {
        connect(screen, &QScreen::availableGeometryChanged, this, settle);
        connect(screen, &QScreen::geometryChanged, this, settle);
    };
    for (const QScreen* screen : QGuiApplication::screens())
        follow(screen);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, [follow, settle](const QScreen* screen) {
        follow(screen);
        settle();
    });
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, settle);
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, settle);
}

/// Null where it was left nowhere, and where nobody tells where it is: what is remembered then is
/// of another session, and older than the chosen size.
QRect Widget::placeLeft(const QList<kivo::ScreenArea>& screens) const {
    if (!window.onDesktop().isPlaceKnown()) return {};
    return kivo::visiblePlace(savedFrames(preferences), screens);
}

/// To where it was left of the screens that are there now, as large as it was there.
void Widget::screensChanged() {
    const QList<kivo::ScreenArea> screens = kivo::presentScreens();
    const QRect left = placeLeft(screens);
    const WidgetSize size =
        left.isNull() ? preferences.size.peek() : widgetSizeOf(left.size(), type);
    const QSize pixels = widgetPixels(size, type);
    window.setPlace(left.isNull() ? firstPlace(pixels, screens)
                                  : resizedPlace(left, pixels, screens));
    preferences.size = size;
    look();
}

void Widget::sizeChanged() {
    const QSize pixels = widgetPixels(preferences.size.peek(), type);
    if (pixels == window.place().size()) return;
    window.setPlace(resizedPlace(window.place(), pixels, kivo::presentScreens()));
    look();
    remember();
}

void Widget::remember() {
    if (!window.onDesktop().isPlaceKnown()) return;
    const kivo::SavedFrames frames =
        kivo::remembering(savedFrames(preferences), window.place(), kivo::presentScreens());
    preferences.setFrames(kivo::textOf(frames).toStdString());
}

// Its menu

void Widget::openMenu(QPoint at) {
    std::vector<WidgetMenu::Entry> entries;
    for (const auto& [size, label] :
         {std::pair{WidgetSize::small, "Small"}, std::pair{WidgetSize::medium, "Medium"},
          std::pair{WidgetSize::large, "Large"}})
        entries.push_back({QString::fromLatin1(label), preferences.size == size,
                           [this, size = size] { preferences.size = size; }});
    entries.push_back({});
    entries.push_back({QStringLiteral("Open Tokwatch"), false, surroundings.openTokwatch});
    entries.push_back(
        {QStringLiteral("Hide Widget"), false, [this] { preferences.shown = false; }});
    menu = std::make_unique<WidgetMenu>(std::move(entries), window.looks());
    connect(menu.get(), &WidgetMenu::closed, this, [this] { menu.release()->deleteLater(); });
    if (window.onDesktop().isSurface()) menu->belongTo(window);
    menu->open(at);
}

} // namespace tokwatch

#include "moc_Widget.cpp"
