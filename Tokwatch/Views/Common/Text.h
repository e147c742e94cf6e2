#pragma once

#include <QString>

#include <string_view>

namespace tokwatch {

/// UTF-8 of the lower layers as the interface's strings.
inline QString text(std::string_view utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

/// The same at the beginning of a line, where its first letter is a large one.
inline QString sentence(std::string_view utf8) {
    QString line = text(utf8);
    if (!line.isEmpty()) line[0] = line[0].toUpper();
    return line;
}

} // namespace tokwatch
