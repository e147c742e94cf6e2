#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace tokwatch {

/// What may stand in the last of `words`, those behind the program's name, as shells offer it: one
/// line each, "--unit\tLead with money or tokens". A directory is asked for by ":directories"
/// alone, which the shell has to list itself.
std::vector<std::string> completions(const CLI::App& app, std::vector<std::string> words);

} // namespace tokwatch
