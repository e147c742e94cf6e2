tokwatch_test(UsageStoreTests
  SOURCES UsageStoreTests.cpp UsageStoreFailureTests.cpp
  LINK TokwatchStore SQLite::SQLite3
  LABELS concurrent)
