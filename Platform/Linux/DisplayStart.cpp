#include "Platform/Linux/DisplayStart.h"

#include <QString>
#include <QtGlobal>

#include <unistd.h>

#include <cstdio>

namespace tokwatch {
namespace {

const char* programName = nullptr;
QtMessageHandler usual = nullptr;
QString reasons; // NOLINT(cert-err58-cpp): an empty text takes no memory

void hear(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (type == QtFatalMsg) {
        std::fprintf(stderr, "%s: no display could be used%s\n", programName,
                     reasons.trimmed().toUtf8().constData());
        ::_exit(1);
    }
    // That a plugin was found and could not be loaded; its own words say why.
    if (type == QtInfoMsg && qstrcmp(context.category, "qt.qpa.plugin") == 0) return;
    if (type == QtDebugMsg || type == QtInfoMsg) return usual(type, context, message);
    reasons += (reasons.isEmpty() ? QStringLiteral(": ") : QStringLiteral("; ")) + message;
}

} // namespace

DisplayStart::DisplayStart(const char* program) {
    programName = program;
    usual = qInstallMessageHandler(hear);
}

DisplayStart::~DisplayStart() {
    qInstallMessageHandler(usual);
    if (!reasons.isEmpty()) qWarning("%s", reasons.sliced(2).toUtf8().constData());
}

} // namespace tokwatch
