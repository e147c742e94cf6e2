tokwatch_library(TokwatchWatcher
  SOURCES DirectoryWatcher.cpp InotifyStream.cpp InotifyWatches.cpp
  PUBLIC TokwatchSupport)
