tokwatch_library(TokwatchCommands
  SOURCES CommandEnvironment.cpp DesktopCommand.cpp Doctor.cpp DoctorCommand.cpp IndexCommand.cpp ProgressBar.cpp RereadCommand.cpp
          SummaryCommand.cpp Table.cpp Terminal.cpp
  PUBLIC TokwatchIndexer TokwatchStore TokwatchPaths TokwatchPreferenceTypes
  PRIVATE TokwatchPresentation TokwatchDisplay)
