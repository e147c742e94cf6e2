#include "KivoPanel/PopupPanel.h"

#include "KivoPanel/DisplayServer.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScreen>
#include <QWindow>

#include <algorithm>
#include <chrono>

namespace kivo {
namespace {

/// A window can be grabbed for only once the server shows it. An attempt that comes too early, or
/// while the panel still holds the pointer for the very click that opened it, is repeated.
constexpr std::chrono::milliseconds grabDelay{60};

/// What a popup is on X11. Not Qt::Popup itself, which is kept from screen readers.
constexpr Qt::WindowFlags unmanaged =
    Qt::Window | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint | Qt::WindowStaysOnTopHint;

/// A Wayland compositor centres a window when it appears, keeps its top when it grows, and tells
/// neither. What it may grow to until it leaves the screen, which bars take a part of.
int highestInPlace(int heightAtOpening, int screenHeight) {
    constexpr int bars = 64;
    return std::max(heightAtOpening, (screenHeight + heightAtOpening - bars) / 2);
}

} // namespace

PopupPanel::PopupPanel(QWindow& panelWindow, Placement placedBy)
    : window(panelWindow), placement(placedBy), grabs(canGrabAll()),
      isPlacedByCompositor(QGuiApplication::platformName().startsWith(QLatin1String("wayland"))) {
    window.setFlags(grabs ? unmanaged : Qt::Window | Qt::FramelessWindowHint);
    window.installEventFilter(this);
    grabTimer.setSingleShot(true);
    grabTimer.setInterval(grabDelay);
    connect(&grabTimer, &QTimer::timeout, this, &PopupPanel::grab);
}

void PopupPanel::open(QPoint at, QSize size) {
    anchor = at;
    opened = true;
    heightAtOpening = size.height();
    place(size);
    window.show();
    window.requestActivate();
    if (grabs) grabTimer.start();
}

void PopupPanel::belongTo(QWindow& parent) {
    window.setFlags(Qt::Popup | Qt::FramelessWindowHint);
    window.setTransientParent(&parent);
}

void PopupPanel::resize(QSize size) {
    if (opened) place(size);
}

void PopupPanel::place(QSize size) {
    const QScreen* screen = QGuiApplication::screenAt(anchor);
    if (screen == nullptr) screen = QGuiApplication::primaryScreen();
    if (isPlacedByCompositor && screen != nullptr)
        size.setHeight(std::min(
            size.height(), highestInPlace(heightAtOpening, screen->availableGeometry().height())));
    // Compositors that tile windows leave those alone that have but one size.
    window.setMinimumSize(size);
    window.setMaximumSize(size);
    if (screen == nullptr) return window.resize(size);
    window.setGeometry(placement(size, anchor, screen->availableGeometry()));
}

void PopupPanel::grab() {
    if (!opened) return;
    grabbed = window.setMouseGrabEnabled(true) && window.setKeyboardGrabEnabled(true);
    if (!grabbed) grabTimer.start();
}

void PopupPanel::release() {
    grabTimer.stop();
    if (!grabbed) return;
    window.setMouseGrabEnabled(false);
    window.setKeyboardGrabEnabled(false);
    grabbed = false;
}

void PopupPanel::close() {
    if (!opened) return;
    opened = false;
    release();
    window.hide();
    emit closed();
}

bool PopupPanel::eventFilter(QObject* watched, QEvent* event) {
    if (watched != &window || !opened) return false;
    switch (event->type()) {
    case QEvent::MouseButtonPress: {
        const auto* press = static_cast<QMouseEvent*>(event);
        const QRect inside(QPoint(), window.size());
        if (inside.contains(press->position().toPoint())) return false;
        const QPoint at = press->globalPosition().toPoint();
        if (!onPressElsewhere || !onPressElsewhere(at, press->button())) close();
        return true;
    }
    case QEvent::FocusOut:
        // With a grab the keyboard stays here whatever the window manager does.
        if (!grabs) close();
        return false;
    case QEvent::Close:
    case QEvent::Hide:
        close();
        return false;
    default:
        return false;
    }
}

} // namespace kivo

#include "moc_PopupPanel.cpp"
