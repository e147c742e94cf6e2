#pragma once

#include <QIcon>

namespace tokwatch {

/// The application's icon as windows and task bars show it, in the usual sizes.
QIcon applicationIcon();

} // namespace tokwatch
