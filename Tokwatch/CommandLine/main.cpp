#include "Platform/Linux/ProcessStart.h"
#include "Tokwatch/CommandLine/Arguments.h"
#include "Tokwatch/CommandLine/EventLoop.h"

#include <csignal>

int main(int argc, char** argv) {
    // A reader that closes its pipe and a file that may grow no further are failures of a write,
    // which is where they are dealt with.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    tokwatch::preventCoreDumps();
    tokwatch::ensureUTF8Locale();
    tokwatch::Terminal terminal = tokwatch::Terminal::standard();
    const int status = tokwatch::runCommandLine(argc, argv, terminal);
    tokwatch::EventLoop::leaveIfHeldUp(status);
    return status;
}
