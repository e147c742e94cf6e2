tokwatch_test(SnapshotTests
  SOURCES SnapshotTests.cpp
  LINK TokwatchStore)
