# The seam alone, for those who implement it.
add_library(TokwatchNotifications INTERFACE)
target_include_directories(TokwatchNotifications INTERFACE ${CMAKE_CURRENT_SOURCE_DIR})

if(TARGET TokwatchLimitsService)
tokwatch_library(TokwatchModel
  SOURCES AppModel.cpp
  PUBLIC TokwatchIndexer TokwatchStore TokwatchScheduler TokwatchNotifications QCoro6::Core Qt6::Core
  PRIVATE TokwatchLimitsService TokwatchPreferences)
endif()
