tokwatch_library(TokwatchScheduler
  SOURCES QtScheduler.cpp
  PUBLIC TokwatchSupport
  PRIVATE Qt6::Core)
