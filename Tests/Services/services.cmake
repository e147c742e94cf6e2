tokwatch_test(WatcherTests
  SOURCES DirectoryWatcherTests.cpp InotifyStreamTests.cpp
  LINK TokwatchWatcher
  LABELS concurrent)
