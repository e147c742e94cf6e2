#pragma once

#include <QGuiApplication>
#include <QWindow>

namespace tokwatch::testing {

/// The window of that title which is shown; null where there is none.
inline QWindow* shownWindow(const QString& title) {
    for (QWindow* window : QGuiApplication::topLevelWindows())
        if (window->isVisible() && window->title() == title) return window;
    return nullptr;
}

} // namespace tokwatch::testing
