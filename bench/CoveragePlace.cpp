#include <cstdlib>
#include <string>

#include <unistd.h>

// Loaded into every program that script/coverage runs: lets each of them keep its counts in a
// folder of its own. In one file they would not add up, since each program has other copies of the
// functions that its objects share.

namespace {

__attribute__((constructor)) void choosePlace() {
    const char* places = std::getenv("COVERAGE_PLACES");
    char program[4096] = {};
    if (places == nullptr || ::readlink("/proc/self/exe", program, sizeof program - 1) <= 0) return;
    const std::string path = program;
    ::setenv("GCOV_PREFIX", (places + path.substr(path.rfind('/'))).c_str(), 1);
}

} // namespace
