#pragma once

namespace tokwatch {

/// Sees to it that a crash never writes this process's memory, and with it a login, to a disk. For
/// every program that reads logins, before it does.
void preventCoreDumps();

/// Throws std::system_error where this process may not have so many threads at once. The toolkit
/// would wait for ever for one of its own that never began.
void requireThreads(int count);

} // namespace tokwatch
