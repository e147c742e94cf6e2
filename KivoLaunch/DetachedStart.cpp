#include "KivoLaunch/DetachedStart.h"

#include <QFile>
#include <QProcess>

namespace kivo {

bool startDetached(const std::filesystem::path& program, const QStringList& arguments,
                   const QProcessEnvironment& environment) {
    QProcess process;
    process.setProgram(QFile::decodeName(program.c_str()));
    process.setArguments(arguments);
    process.setProcessEnvironment(environment);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    return process.startDetached();
}

} // namespace kivo
