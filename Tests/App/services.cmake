tokwatch_test(TitleTests
  SOURCES ObservingUpdaterTests.cpp StatusTitleTests.cpp
  LINK TokwatchTitle TokwatchPreferences)
