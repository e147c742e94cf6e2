#include "KivoPaste/TextPaste.h"

#include "KivoPanel/DisplayServer.h"
#include "KivoPaste/FocusedText.h"
#include "KivoPaste/PasteKey.h"

#include <QClipboard>
#include <QDeadlineTimer>
#include <QGuiApplication>

#include <QCoroTimer>

#include <chrono>
#include <utility>

namespace kivo {
namespace {

using Done = std::function<void(PasteOutcome)>;

/// Until a window manager has given the keyboard back, and fingers have left what they pressed.
constexpr std::chrono::milliseconds focusPatience{1000};
constexpr std::chrono::milliseconds pause{20};

QCoro::Task<bool> focusToReturn() {
    const QDeadlineTimer deadline(focusPatience);
    while (!isAnotherProgramReady()) {
        if (deadline.hasExpired()) co_return false;
        co_await QCoro::sleepFor(pause);
    }
    co_return true;
}

void copy(const QString& text) {
    QClipboard& clipboard = *QGuiApplication::clipboard();
    clipboard.setText(text);
    // Where the paste key is the older of the two, it takes the selection.
    if (clipboard.supportsSelection()) clipboard.setText(text, QClipboard::Selection);
}

QCoro::Task<> paste(QDBusConnection session, QString text, Done done) {
    const bool isElsewhere = co_await focusToReturn();
    Insertion insertion = Insertion::refused;
    if (isElsewhere) insertion = co_await insertIntoFocusedText(session, text);
    if (insertion == Insertion::done) {
        done(PasteOutcome::pasted);
        co_return;
    }
    copy(text);
    const bool isPressed =
        insertion == Insertion::impossible && isAnotherProgramReady() && pressPasteKey();
    done(isPressed ? PasteOutcome::pasted : PasteOutcome::copied);
}

} // namespace

bool canPaste() {
    return canGrabAll();
}

void pasteText(const QDBusConnection& session, const QString& text,
               std::function<void(PasteOutcome)> done) {
    paste(session, text, std::move(done));
}

} // namespace kivo
