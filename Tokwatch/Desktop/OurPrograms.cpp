#include "Tokwatch/Desktop/OurPrograms.h"

#include "Platform/Linux/DesktopBus.h"
#include "Platform/System/Places.h"

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace tokwatch {
namespace {

/// The command, which finds its way to this program.
QString commandProgram() {
    return QFile::decodeName(ourProgram("tokwatch").c_str());
}

} // namespace

kivo::LoginItem::Program loginProgram() {
    const QLatin1String id(DesktopBus::serviceName);
    return {id,
            QStringLiteral("Tokwatch"),
            QStringLiteral("Rate limits and token usage of AI coding assistants"),
            {commandProgram()},
            id};
}

QString openCommand() {
    const QString name = QStringLiteral("tokwatch");
    const QFileInfo found(QStandardPaths::findExecutable(name));
    const bool isFound =
        found.canonicalFilePath() == QFileInfo(commandProgram()).canonicalFilePath();
    return (isFound ? name : commandProgram()) + QStringLiteral(" --open");
}

} // namespace tokwatch
