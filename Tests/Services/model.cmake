if(TARGET TokwatchLimitsService)
tokwatch_test(LimitsServiceTests
  SOURCES RefreshPolicyTests.cpp
  LINK TokwatchLimitsService Qt6::Core)
endif()
