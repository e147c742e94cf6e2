#include "Arguments.h"

#include <csignal>

int main(int argc, char** argv) {
    // A reader that closes the pipe early is not an error of ours to die from; the write's own
    // result tells.
    std::signal(SIGPIPE, SIG_IGN);
    tokwatch::Terminal terminal = tokwatch::Terminal::standard();
    return tokwatch::runCommandLine(argc, argv, terminal);
}
