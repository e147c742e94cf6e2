tokwatch_library(TokwatchIndexer
  SOURCES IndexPass.cpp IndexerService.cpp SliceReader.cpp
  PUBLIC TokwatchStore TokwatchIngestion Qt6::Core)
