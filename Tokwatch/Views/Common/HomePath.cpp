#include "Tokwatch/Views/Common/HomePath.h"

#include <QFile>

namespace tokwatch {

QString homePath(const std::filesystem::path& path, const std::filesystem::path& home) {
    const QString whole = QFile::decodeName(path.c_str());
    const QString prefix = QFile::decodeName(home.c_str()) + u'/';
    return whole.startsWith(prefix) ? QStringLiteral("~/") + whole.sliced(prefix.size()) : whole;
}

} // namespace tokwatch
