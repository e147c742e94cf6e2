tokwatch_test(CommandTests
  SOURCES CommandTests.cpp ProgramRunner.cpp TableTests.cpp
  LINK TokwatchCommands SQLite::SQLite3)
target_compile_definitions(CommandTests PRIVATE
  TOKWATCH_PROGRAM="$<TARGET_FILE:tokwatch>"
  TOKWATCH_DEMO_HOME="${CMAKE_SOURCE_DIR}/script/demo-home")
add_dependencies(CommandTests tokwatch)
