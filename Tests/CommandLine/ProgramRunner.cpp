#include "Tests/CommandLine/ProgramRunner.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>

namespace tokwatch::testing {
namespace {

std::vector<char*> pointers(const std::vector<std::string>& texts) {
    std::vector<char*> all;
    for (const std::string& text : texts)
        all.push_back(const_cast<char*>(text.c_str()));
    all.push_back(nullptr);
    return all;
}

std::string contents(std::FILE* file) {
    std::rewind(file);
    std::string text;
    std::array<char, 4096> buffer{};
    while (const std::size_t got = std::fread(buffer.data(), 1, buffer.size(), file))
        text.append(buffer.data(), got);
    std::fclose(file);
    return text;
}

} // namespace

ProgramResult runProgram(const std::vector<std::string>& command,
                         const std::vector<std::string>& environment) {
    // Files instead of pipes: no output is too large for them, and nothing has to be read while the
    // program runs.
    std::FILE* out = std::tmpfile();
    std::FILE* err = std::tmpfile();
    std::vector<std::string> variables{"PATH=/usr/bin:/bin", "TZ=UTC"};
    variables.insert(variables.end(), environment.begin(), environment.end());
    const pid_t child = fork();
    if (child == 0) {
        dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
        dup2(fileno(out), STDOUT_FILENO);
        dup2(fileno(err), STDERR_FILENO);
        execvpe(command[0].c_str(), pointers(command).data(), pointers(variables).data());
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), contents(out),
            contents(err)};
}

} // namespace tokwatch::testing
