#pragma once

#include <QGuiApplication>

namespace tokwatch::testing {

/// The application object that fonts need; one for the whole test program.
inline void needGuiApplication() {
    static int argc = 1;
    static char name[] = "test";
    static char* argv[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QGuiApplication application(argc, argv);
}

} // namespace tokwatch::testing
