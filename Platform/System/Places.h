#pragma once

#include <filesystem>

namespace tokwatch {

/// The directory of the program that runs; empty where the system does not tell.
std::filesystem::path programDirectory();

/// The directory of the shared library that holds this address. None for the program itself: the
/// loader knows only the name it was called by, which may be relative to anything.
std::filesystem::path libraryDirectory(const void* address);

/// $HOME, else what the account says; empty where there is neither.
std::filesystem::path homeDirectory();

} // namespace tokwatch
