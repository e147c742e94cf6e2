if(TARGET TokwatchLimitsService)
  tokwatch_test(AppModelTests
    SOURCES AppModelTests.cpp
    LINK TokwatchModel TokwatchLimitsService TokwatchPreferences SQLite::SQLite3)
endif()
