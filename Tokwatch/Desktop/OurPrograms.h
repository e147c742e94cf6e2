#pragma once

#include "KivoLaunch/LoginItem.h"

#include <QString>

namespace tokwatch {

/// What the desktop starts at login.
kivo::LoginItem::Program loginProgram();

/// The command that opens the popover, for users who bind a key to it where the desktop lends none:
/// by its name alone where a shell finds it by that.
QString openCommand();

} // namespace tokwatch
