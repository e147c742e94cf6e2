#pragma once

#include <QString>

namespace tokwatch {

/// What people here call the machine that the program runs on.
inline QString machineWord() {
    return QStringLiteral("computer");
}

} // namespace tokwatch
