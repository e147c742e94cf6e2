#include "KivoLaunch/SessionRestart.h"

#include <QGuiApplication>
#include <QSessionManager>

namespace kivo {

void leaveOutOfSavedSessions(QGuiApplication& application) {
    QObject::connect(
        &application, &QGuiApplication::saveStateRequest, &application,
        [](QSessionManager& manager) { manager.setRestartHint(QSessionManager::RestartNever); },
        Qt::DirectConnection); // the answer is sent as the signal returns
}

} // namespace kivo
