tokwatch_test(DemoHomeTests
  SOURCES DemoHomeTests.cpp
  LINK TokwatchIndexer)
target_compile_definitions(DemoHomeTests PRIVATE TOKWATCH_DEMO_HOME="${PROJECT_SOURCE_DIR}/script/demo-home")
