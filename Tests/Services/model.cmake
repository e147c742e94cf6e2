if(TARGET TokwatchLimitsService)
  tokwatch_test(LimitsServiceTests
    SOURCES LimitsServiceTests.cpp RefreshPolicyTests.cpp
    LINK TokwatchLimitsService TokwatchPreferences TokwatchStore)
endif()
