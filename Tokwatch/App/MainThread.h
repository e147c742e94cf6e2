#pragma once

#include <QCoreApplication>
#include <QMetaObject>

#include <functional>
#include <utility>

namespace tokwatch {

/// Runs the call from the main thread's event loop. Callable from any thread.
inline void onMainThread(std::function<void()> call) {
    QMetaObject::invokeMethod(QCoreApplication::instance(), std::move(call), Qt::QueuedConnection);
}

} // namespace tokwatch
