#pragma once

#include <QString>

#include <string_view>

namespace tokwatch {

/// UTF-8 of the lower layers as the interface's strings.
inline QString text(std::string_view utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

} // namespace tokwatch
