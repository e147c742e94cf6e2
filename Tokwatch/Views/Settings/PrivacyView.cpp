#include "Tokwatch/Views/Settings/PrivacyView.h"

#include "Tokwatch/Views/Common/PlatformWords.h"
#include "TokwatchCore/Limits/UsageServers.h"

namespace tokwatch {

QString PrivacyView::promise() {
    return QStringLiteral("Tokwatch only sends each login to its own provider. Nothing else leaves "
                          "your %1.")
        .arg(machineWord());
}

QVariantList PrivacyView::facts() {
    const auto fact = [](const char* symbol, const char* title, const QString& sentence) {
        return QVariant::fromValue(PrivacyFact{symbol, title, sentence});
    };
    return {
        fact("folder", "What is read",
             "The session files that the assistants keep in your home directory. Of each answer, "
             "Tokwatch takes the time, the model and the token counts. What you and the assistant "
             "wrote is skipped."),
        fact("lock", "What is asked with your logins",
             QString("Claude's goes to %1 and Codex's to %2, to ask how much of your limits is "
                     "left. A login is read at that moment and never stored or logged.")
                 .arg(claudeServer, codexServer)),
        fact("layers", "What is kept",
             "Sums for each model and day of the last 90 days, and the latest limits. The files "
             "can be read by your account only."),
        fact("check", "What there is not",
             "No account, no telemetry, no advertising, no other server."),
    };
}

} // namespace tokwatch
