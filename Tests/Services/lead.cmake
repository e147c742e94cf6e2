tokwatch_test(IndexerTests
  SOURCES IndexerServiceTests.cpp
  LINK TokwatchIndexer
  LABELS concurrent)
