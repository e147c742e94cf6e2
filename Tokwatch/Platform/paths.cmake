tokwatch_library(TokwatchPaths SOURCES UserPaths.cpp)
