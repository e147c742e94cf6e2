#include "Tokwatch/Views/Settings/AboutView.h"

#include "Tokwatch/Views/Common/Text.h"
#include "TokwatchCore/Support/ApplicationVersion.h"

namespace tokwatch {

QString AboutView::version() {
    return QStringLiteral("Version ") + text(applicationVersion());
}

QString AboutView::purpose() {
    return QStringLiteral("Rate limits and token usage of AI coding assistants, at a glance.");
}

QString AboutView::licence() {
    return QStringLiteral("Free software under the MIT licence.\n© 2026 The Tokwatch developers");
}

QVariantList AboutView::credits() {
    const auto credit = [](const char* name, const char* use, const char* licence) {
        return QVariant::fromValue(Credit{name, use, licence});
    };
    return {
        credit("Qt", "Windows, network, desktop bus", "LGPL 3"),
        credit("QCoro", "Coroutines for Qt", "MIT"),
        credit("SQLite", "The usage database", "Public domain"),
        credit("simdjson", "Reading session files", "Apache 2.0"),
        credit("JSON for Modern C++", "Records as text", "MIT"),
        credit("Abseil", "Calendars and time zones", "Apache 2.0"),
        credit("CLI11", "The command line", "BSD 3-Clause"),
    };
}

} // namespace tokwatch
