#pragma once

#include <string>
#include <vector>

namespace tokwatch::testing {

struct ProgramResult {
    int status = -1; ///< exit status; 128 + signal when it was killed
    std::string out;
    std::string err;
};

/// Runs a program to its end with an environment of PATH, TZ=UTC and `environment` alone, so that
/// nothing of the user's reaches it.
ProgramResult runProgram(const std::vector<std::string>& command,
                         const std::vector<std::string>& environment = {});

} // namespace tokwatch::testing
