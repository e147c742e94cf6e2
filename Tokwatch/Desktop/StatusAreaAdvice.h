#pragma once

#include <QString>

namespace tokwatch {

/// How to get a status area on a desktop that shows none. `desktop` is $XDG_CURRENT_DESKTOP, a list
/// of names with colons between them.
QString statusAreaAdvice(const QString& desktop);

} // namespace tokwatch
