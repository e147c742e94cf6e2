#include "Platform/Linux/ProcessStart.h"
#include "Tokwatch/CommandLine/Arguments.h"
#include "Tokwatch/CommandLine/Logs/LogCommands.h"

int main(int argc, char** argv) {
    tokwatch::prepareCommand();
    tokwatch::Terminal terminal = tokwatch::Terminal::standard();
    return tokwatch::runProgram<tokwatch::LogCommands>(argc, argv, terminal);
}
