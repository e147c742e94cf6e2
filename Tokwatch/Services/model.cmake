tokwatch_library(TokwatchScheduler
  SOURCES QtScheduler.cpp
  PUBLIC TokwatchSupport
  PRIVATE Qt6::Core)

if(TARGET TokwatchLimits AND TARGET TokwatchPreferences)
  tokwatch_library(TokwatchLimitsService
    SOURCES LimitsService.cpp RefreshPolicy.cpp
    PUBLIC TokwatchLimits TokwatchScheduler QCoro6::Core
    PRIVATE TokwatchPreferences TokwatchStore)
endif()
