#include "KivoHotKeys/KeyRecorder.h"

#include "KivoHotKeys/HotKey.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QQuickWindow>

#include <algorithm>
#include <array>

namespace kivo {
namespace {

bool isModifier(int key) {
    static constexpr std::array modifiers{
        Qt::Key_Control, Qt::Key_Shift,   Qt::Key_Alt,      Qt::Key_AltGr,   Qt::Key_Meta,
        Qt::Key_Super_L, Qt::Key_Super_R, Qt::Key_CapsLock, Qt::Key_NumLock, Qt::Key_ScrollLock,
    };
    return std::ranges::find(modifiers, key) != modifiers.end();
}

bool isErasing(int key) {
    return key == Qt::Key_Backspace || key == Qt::Key_Delete;
}

} // namespace

void KeyRecorder::setRecording(bool records) {
    if (records == recording) return;
    recording = records;
    if (recording) forceActiveFocus(Qt::OtherFocusReason);
    grabKeyboard();
    hold({});
    emit recordingChanged();
}

/// An X server gives keys that others have to them, unless somebody has the keyboard. Elsewhere
/// that cannot be had, and the toolkit complains.
void KeyRecorder::grabKeyboard() {
    if (window() != nullptr && QGuiApplication::platformName() == QLatin1String("xcb"))
        window()->setKeyboardGrabEnabled(recording);
}

void KeyRecorder::hold(Qt::KeyboardModifiers modifiers) {
    QString text = textOf(modifiers);
    if (text == heldText) return;
    heldText = std::move(text);
    emit heldChanged();
}

bool KeyRecorder::event(QEvent* event) {
    // The window's own shortcuts are keys like any others.
    if (event->type() == QEvent::ShortcutOverride && recording) {
        event->accept();
        return true;
    }
    return QQuickItem::event(event);
}

void KeyRecorder::keyPressEvent(QKeyEvent* event) {
    if (recording)
        record(*event);
    else
        start(*event);
}

void KeyRecorder::keyReleaseEvent(QKeyEvent* event) {
    if (recording) hold(event->modifiers());
    event->setAccepted(recording);
}

void KeyRecorder::focusOutEvent(QFocusEvent* event) {
    setRecording(false);
    QQuickItem::focusOutEvent(event);
}

void KeyRecorder::start(QKeyEvent& event) {
    const int key = event.key();
    event.setAccepted(event.modifiers() == Qt::NoModifier);
    if (!event.isAccepted()) return;
    if (key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter)
        setRecording(true);
    else if (isErasing(key))
        emit cleared();
    else
        event.ignore();
}

void KeyRecorder::record(QKeyEvent& event) {
    if (event.isAutoRepeat() || isModifier(event.key())) return hold(event.modifiers());
    const HotKey pressed{event.modifiers(), static_cast<Qt::Key>(event.key())};
    if (pressed.modifiers == Qt::NoModifier && pressed.key == Qt::Key_Escape)
        return setRecording(false);
    if (pressed.modifiers == Qt::NoModifier && isErasing(pressed.key)) {
        emit cleared();
        return setRecording(false);
    }
    if (pressed.key == Qt::Key_Tab || pressed.key == Qt::Key_Backtab) {
        setRecording(false);
        return event.ignore(); // it leads the keyboard on
    }
    if (!isUsable(pressed)) return emit refused();
    emit recorded(textOf(pressed));
    setRecording(false);
}

} // namespace kivo

#include "moc_KeyRecorder.cpp"
