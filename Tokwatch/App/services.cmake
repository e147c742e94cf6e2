tokwatch_library(TokwatchTitle
  SOURCES StatusTitle.cpp
  PUBLIC TokwatchRecords Qt6::Core
  PRIVATE TokwatchPreferences TokwatchPresentation)
