#include "KivoPanel/FloatingPanel.h"

#include "KivoPanel/PanelPlacement.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QScreen>
#include <QWindow>

#include <chrono>
#include <utility>

namespace kivo {
namespace {

/// Long enough that a drag is remembered once, and that screens which change together have.
constexpr std::chrono::milliseconds restTime{250};

} // namespace

FloatingPanel::FloatingPanel(QWindow& panelWindow, SavedFrames savedFrames)
    : window(panelWindow), frames(std::move(savedFrames)) {
    window.setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    for (QTimer* timer : {&moveTimer, &placeTimer}) {
        timer->setSingleShot(true);
        timer->setInterval(restTime);
    }
    connect(&moveTimer, &QTimer::timeout, this, &FloatingPanel::moved);
    connect(&placeTimer, &QTimer::timeout, this, &FloatingPanel::place);
    connect(&window, &QWindow::xChanged, this, &FloatingPanel::positionChanged);
    connect(&window, &QWindow::yChanged, this, &FloatingPanel::positionChanged);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, &FloatingPanel::watch);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, &FloatingPanel::screensChanged);
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &FloatingPanel::screensChanged);
    for (QScreen* screen : QGuiApplication::screens())
        watch(screen);
    // Of all objects: the end of the program is told to the application alone.
    qGuiApp->installEventFilter(this);
}

FloatingPanel::~FloatingPanel() {
    tellMove();
}

void FloatingPanel::watch(QScreen* screen) {
    connect(screen, &QScreen::availableGeometryChanged, this, &FloatingPanel::screensChanged);
}

/// A window manager may move what lies where no screen is any more; that is not where it was left.
void FloatingPanel::screensChanged() {
    isMoving = false;
    moveTimer.stop();
    placeTimer.start();
}

void FloatingPanel::open(QPoint opensAt, QSize panelSize, Keyboard keyboard) {
    anchor = opensAt;
    size = panelSize;
    opened = true;
    place();
    window.setProperty("_q_showWithoutActivating", keyboard == Keyboard::stays);
    window.show();
    if (keyboard == Keyboard::comes) window.requestActivate();
}

void FloatingPanel::resize(QSize panelSize) {
    tellMove();
    size = panelSize;
    place();
}

QRect FloatingPanel::wantedPlace() const {
    if (frames.empty()) {
        const QScreen* screen = QGuiApplication::screenAt(anchor);
        if (screen == nullptr) screen = QGuiApplication::primaryScreen();
        return screen == nullptr ? QRect(anchor, size)
                                 : panelRect(size, anchor, screen->availableGeometry());
    }
    SavedFrames sized = frames;
    for (SavedFrame& each : sized)
        each.frame.setSize(size);
    return visiblePlace(sized, presentScreens());
}

void FloatingPanel::place() {
    if (!opened) return;
    const QRect wanted = wantedPlace();
    if (wanted.isNull()) return; // without a screen
    // Compositors that tile windows leave those alone that have but one size.
    window.setMinimumSize(wanted.size());
    window.setMaximumSize(wanted.size());
    placedAt = wanted.topLeft();
    window.setGeometry(wanted);
}

void FloatingPanel::close() {
    tellMove();
    opened = false;
    window.hide();
}

void FloatingPanel::startMove() {
    isMoving = true;
    // A compositor moves its windows itself. A window manager could, too, but from where the
    // pointer is by the time it is asked, so that the window would lag behind by a part of the way.
    const bool isComposed = QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
    if (isComposed && (!isHeld || window.startSystemMove())) return;
    // A quick hand has let go before it is known to drag: then it goes all the way at once.
    followsPointer = isHeld;
    window.setPosition(pointer - grip);
}

void FloatingPanel::follow(const QMouseEvent& event) {
    pointer = event.globalPosition().toPoint();
    if (followsPointer) window.setPosition(pointer - grip);
}

void FloatingPanel::positionChanged() {
    if (isMoving && window.position() != placedAt) moveTimer.start();
}

/// Of a move that is not told yet.
void FloatingPanel::tellMove() {
    if (!moveTimer.isActive()) return;
    moveTimer.stop();
    moved();
}

void FloatingPanel::moved() {
    if (!opened || !isMoving) return;
    frames = remembering(std::move(frames), window.geometry(), presentScreens());
    if (onMoved) onMoved(frames);
}

bool FloatingPanel::eventFilter(QObject* watched, QEvent* event) {
    // The toolkit closes all windows first when the program ends.
    if (watched == qGuiApp && event->type() == QEvent::Quit) isProgramEnding = true;
    if (watched != &window || !opened) return false;
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        isHeld = true;
        grip = static_cast<QMouseEvent*>(event)->position().toPoint();
        follow(*static_cast<QMouseEvent*>(event));
        return false;
    case QEvent::MouseMove:
        follow(*static_cast<QMouseEvent*>(event));
        return false;
    case QEvent::MouseButtonRelease:
        follow(*static_cast<QMouseEvent*>(event));
        isHeld = false;
        followsPointer = false;
        return false;
    case QEvent::Close:
        // Hidden instead, so that it reopens at once. Not refused: that would stop the program's
        // end.
        isProgramEnding ? close() : emit closeRequested();
        return true;
    default:
        return false;
    }
}

} // namespace kivo

#include "moc_FloatingPanel.cpp"
