#include "Tokwatch/Desktop/QmlRuntime.h"

namespace tokwatch {

std::shared_ptr<QQmlEngine> QmlRuntime::engine() {
    if (std::shared_ptr<QQmlEngine> running = current.lock()) return running;
    auto made = std::make_shared<QQmlEngine>();
    made->addImportPath(QStringLiteral("qrc:/qt/qml"));
    appearance.install(*made);
    current = made;
    return made;
}

} // namespace tokwatch
