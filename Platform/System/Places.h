#pragma once

#include <filesystem>
#include <string_view>

namespace tokwatch {

/// The directory that the running program was started from, also when it has been moved since, as
/// an upgrade does it; empty where the system does not tell.
std::filesystem::path programDirectory();

/// One of our programs by its name. In a build tree all of them lie beside each other; installed,
/// `tokwatch` is where people's programs are (bin) and what it becomes where nobody looks
/// (libexec/tokwatch). Those at the place that this one was started from go before those where it
/// was moved to. At the former where there is none: an error then names a path.
std::filesystem::path ourProgram(std::string_view name);

/// The directory of the shared library that holds this address. None for the program itself: the
/// loader knows only the name it was called by, which may be relative to anything.
std::filesystem::path libraryDirectory(const void* address);

/// $HOME, else what the account says; empty where there is neither. A relative one, be it "~",
/// would be another place in each directory and counts as not set.
std::filesystem::path homeDirectory();

} // namespace tokwatch
