#pragma once

namespace tokwatch {

/// Makes the process's locale, and that of its children, one whose texts are UTF-8, where it is
/// another or none that is installed: nothing here shows numbers or words by locale, and Qt
/// complains on standard error about any other encoding. For every program, before its application
/// object and its first thread.
void ensureUTF8Locale();

} // namespace tokwatch
