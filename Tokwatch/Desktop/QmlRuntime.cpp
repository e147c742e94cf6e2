#include "Tokwatch/Desktop/QmlRuntime.h"

#include <QtQml/QQmlExtensionPlugin>

#include <malloc.h>

Q_IMPORT_QML_PLUGIN(Kivo_HotKeysPlugin)
Q_IMPORT_QML_PLUGIN(Kivo_SettingsPlugin)
Q_IMPORT_QML_PLUGIN(Kivo_ThemePlugin)
Q_IMPORT_QML_PLUGIN(Tokwatch_CommonPlugin)
Q_IMPORT_QML_PLUGIN(Tokwatch_MenuPlugin)
Q_IMPORT_QML_PLUGIN(Tokwatch_OnboardingPlugin)
Q_IMPORT_QML_PLUGIN(Tokwatch_PopoverPlugin)
Q_IMPORT_QML_PLUGIN(Tokwatch_Popover_ModelsPlugin)
Q_IMPORT_QML_PLUGIN(Tokwatch_Popover_RangePlugin)
Q_IMPORT_QML_PLUGIN(Tokwatch_Popover_StatsPlugin)
Q_IMPORT_QML_PLUGIN(Tokwatch_Popover_UsagePlugin)
Q_IMPORT_QML_PLUGIN(Tokwatch_SettingsPlugin)

namespace tokwatch {

std::shared_ptr<QQmlEngine> QmlRuntime::engine() {
    if (std::shared_ptr<QQmlEngine> running = current.lock()) return running;
    const auto made = std::make_shared<QQmlEngine>();
    made->addImportPath(QStringLiteral("qrc:/qt/qml"));
    appearance.install(*made);
    current = made;
    return made;
}

void QmlRuntime::trim() {
    ::malloc_trim(0);
}

} // namespace tokwatch
