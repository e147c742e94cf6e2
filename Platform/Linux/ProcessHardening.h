#pragma once

namespace tokwatch {

/// Sees to it that a crash never writes this process's memory, and with it a login, to a disk. For
/// every program that reads logins, before it does.
void preventCoreDumps();

} // namespace tokwatch
