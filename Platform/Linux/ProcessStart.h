#pragma once

#include <cstddef>
#include <functional>

// What a program sees to before all else.
namespace tokwatch {

/// Makes the process's locale, and that of its children, one whose texts are UTF-8, where it is
/// another or none that is installed: nothing here shows numbers or words by locale, and Qt
/// complains on standard error about any other encoding. For every program, before its application
/// object and its first thread.
void ensureUTF8Locale();

/// Sees to it that a crash never writes this process's memory, and with it a login, to a disk. For
/// every program that reads logins, before it does.
void preventCoreDumps();

/// Opens what of the standard descriptors this process was started without, so that no file, bus or
/// display gets their numbers and with it what is meant for them: messages go nowhere, and reading
/// and printing fails as without it. For every program, before it opens anything.
void fillStandardDescriptors();

/// For every program that is a command: standard descriptors, no core dumps, and a reader that
/// closes its pipe and a file that may grow no further are failures of a write, which is where they
/// are dealt with.
void prepareCommand();

/// Runs a program with windows and answers its status: 1, after a line on standard error, where it
/// throws.
int runWindows(const char* program, const std::function<int()>& run);

/// Throws std::system_error where this process may not have so many threads at once. The toolkit
/// would wait for ever for one of its own that never began.
void requireThreads(int count);

/// Throws std::system_error where this process may not open so many files more. A thread of the
/// toolkit's that finds no descriptors for its wake-ups ends the process by a signal.
void requireDescriptors(int count);

/// Throws std::system_error where this process's address space is limited and has no room for so
/// many bytes more. The toolkit's threads and painters end the process by a signal where an
/// allocation fails.
void requireAddressSpace(std::size_t bytes);

} // namespace tokwatch
