#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>

namespace tokwatch::testing {

/// The application object that events are posted to; one for the whole test program, which may have
/// made a more capable one itself.
inline void needEventLoop() {
    if (QCoreApplication::instance() != nullptr) return;
    static int argc = 1;
    static char name[] = "test";
    static char* argv[] = {name, nullptr};
    // Never destroyed: at the process's end Qt's own statics, which it tells of its going, are
    // gone.
    static const auto* const application = new QCoreApplication(argc, argv);
    static_cast<void>(application);
}

/// Delivers all events that wait, and those that they bring about.
inline void settle() {
    // A continuation takes a few turns: the future's event, the coroutine's, what it posts.
    for (int turn = 0; turn < 8; ++turn) {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

/// Runs the event loop until the condition holds; false after a minute, the bound for a broken
/// test.
inline bool until(const auto& condition) {
    QTimer wake; // the loop must turn though nothing happens
    wake.start(10);
    const QDeadlineTimer deadline(60'000);
    while (!condition()) {
        if (deadline.hasExpired()) return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

} // namespace tokwatch::testing
