tokwatch_library(TokwatchDesktopBus
  SOURCES DesktopBus.cpp ProcessHardening.cpp
  PUBLIC Qt6::DBus TokwatchNotifications
  PRIVATE TokwatchSupport)
set_target_properties(TokwatchDesktopBus PROPERTIES AUTOMOC ON)
