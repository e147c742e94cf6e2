#include "Platform/Linux/MuteBuses.h"
#include "Platform/Linux/ProcessMemory.h"
#include "Platform/Linux/ProcessStart.h"
#include "Tokwatch/CommandLine/Arguments.h"
#include "Tokwatch/CommandLine/Session/EventLoop.h"
#include "Tokwatch/CommandLine/Session/SessionCommands.h"

int main(int argc, char** argv) {
    tokwatch::prepareCommand();
    tokwatch::ensureUTF8Locale();
    tokwatch::keepMemorySmall();
    tokwatch::leaveOutMuteBuses();
    tokwatch::Terminal terminal = tokwatch::Terminal::standard();
    const int status = tokwatch::runProgram<tokwatch::SessionCommands>(argc, argv, terminal);
    tokwatch::EventLoop::leaveIfHeldUp(status);
    return status;
}
