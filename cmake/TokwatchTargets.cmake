# One target a folder. A target exports its own folder and nothing else, so that an include which the
# declared dependencies do not allow fails to compile.

add_library(TokwatchBuildFlags INTERFACE)
target_compile_options(TokwatchBuildFlags INTERFACE
  # g++ 12 sees overlapping copies in std::string where there are none, hence no -Wrestrict.
  -Wall -Wextra -Wno-restrict -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor -Woverloaded-virtual)
if(TOKWATCH_WARNINGS_AS_ERRORS)
  target_compile_options(TokwatchBuildFlags INTERFACE -Werror)
endif()
if(TOKWATCH_SANITIZE)
  add_compile_options(-fsanitize=${TOKWATCH_SANITIZE} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TOKWATCH_SANITIZE})
  if(TOKWATCH_SANITIZE MATCHES "undefined")
    add_compile_options(-fno-sanitize-recover=all)
  endif()
endif()

# tokwatch_library(NAME SOURCES … [PUBLIC targets that the headers need …] [PRIVATE targets …])
function(tokwatch_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC ${ARG_PUBLIC} PRIVATE TokwatchBuildFlags ${ARG_PRIVATE})
endfunction()

# All that is also run under the thread sanitizer: the tests with the label "concurrent".
add_custom_target(ConcurrencyTests)

# tokwatch_test(NAME SOURCES … LINK … [LABELS …]): one test program, its cases known to ctest one by one.
function(tokwatch_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE TokwatchBuildFlags TestSupport ${ARG_LINK} GTest::gmock GTest::gtest_main)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  if("concurrent" IN_LIST ARG_LABELS)
    add_dependencies(ConcurrencyTests ${name})
  endif()
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT 300)
endfunction()
