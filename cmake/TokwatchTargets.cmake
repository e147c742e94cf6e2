# One target a folder. A target exports its own folder and nothing else, so that an include which the
# declared dependencies do not allow fails to compile.

add_library(TokwatchBuildFlags INTERFACE)
target_compile_options(TokwatchBuildFlags INTERFACE
  # g++ 12 sees overlapping copies in std::string where there are none, hence no -Wrestrict.
  -Wall -Wextra -Wno-restrict -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
  # g++ 14 takes the members of what std::optional::emplace makes for uninitialised; g++ 12 keeps watch over this one.
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_GREATER_EQUAL:$<CXX_COMPILER_VERSION>,13>>:-Wno-maybe-uninitialized>)
if(TOKWATCH_WARNINGS_AS_ERRORS)
  target_compile_options(TokwatchBuildFlags INTERFACE -Werror)
endif()
if(TOKWATCH_SANITIZE)
  add_compile_options(-fsanitize=${TOKWATCH_SANITIZE} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TOKWATCH_SANITIZE})
  if(TOKWATCH_SANITIZE MATCHES "undefined")
    # Checks of every access for null cost a third of the compiler's time, and find what ends with a signal anyway.
    add_compile_options(-fno-sanitize-recover=all -fno-sanitize=null,alignment)
  endif()
endif()
# A linker that takes tenths of a second for what others take seconds for, where there is one.
find_program(MOLD mold)
if(MOLD)
  add_link_options(-fuse-ld=mold)
endif()
# What tests are compiled with: they are to start soon, not to run fast. Behaviour that is undefined is looked for in
# the rooms, faults of memory everywhere.
set(TOKWATCH_TEST_OPTIONS $<$<NOT:$<CONFIG:Debug>>:-O0>)
if(TOKWATCH_SANITIZE MATCHES "undefined")
  list(APPEND TOKWATCH_TEST_OPTIONS -fno-sanitize=undefined)
endif()

# tokwatch_prefer_archives(PACKAGE): its static libraries where they lie beside the shared ones, which is so on Debian.
# Abseil is a dozen small ones, and to load them takes a tenth of the time of a short command.
function(tokwatch_prefer_archives package)
  get_property(targets DIRECTORY PROPERTY IMPORTED_TARGETS)
  list(FILTER targets INCLUDE REGEX "^${package}::")
  foreach(target IN LISTS targets)
    get_target_property(library ${target} IMPORTED_LOCATION_NONE)
    string(REGEX REPLACE "\\.so[.0-9]*$" ".a" archive "${library}")
    if(EXISTS "${archive}")
      set_target_properties(${target} PROPERTIES IMPORTED_LOCATION_NONE "${archive}")
    endif()
  endforeach()
endfunction()

# tokwatch_library(NAME SOURCES … [PUBLIC targets that the headers need …] [PRIVATE targets …])
function(tokwatch_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC ${ARG_PUBLIC} PRIVATE TokwatchBuildFlags ${ARG_PRIVATE})
endfunction()

# tokwatch_qml_module(NAME URI uri SOURCES … QML … [PUBLIC …] [PRIVATE …]): a folder with QML beside its C++ types,
# compiled ahead.
function(tokwatch_qml_module name)
  cmake_parse_arguments(ARG "" "URI" "SOURCES;QML;PUBLIC;PRIVATE" ${ARGN})
  set(CMAKE_AUTOMOC ON)
  string(REPLACE "." "/" path ${ARG_URI})
  # The sanitizers are for our C++, not for what the QML compiler makes: there QML is interpreted.
  set(cache)
  if(TOKWATCH_SANITIZE)
    set(cache NO_CACHEGEN)
  endif()
  qt_add_qml_module(${name} STATIC
    OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/qml/${path}
    URI ${ARG_URI}
    VERSION 1.0
    RESOURCE_PREFIX /qt/qml
    ${cache}
    SOURCES ${ARG_SOURCES}
    QML_FILES ${ARG_QML})
  target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC Qt6::Quick ${ARG_PUBLIC} PRIVATE TokwatchBuildFlags ${ARG_PRIVATE})
  # What the QML compiler writes is not ours to warn about.
  get_target_property(sources ${name} SOURCES)
  list(FILTER sources INCLUDE REGEX "/\\.rcc/qmlcache/")
  set_source_files_properties(${sources} PROPERTIES COMPILE_OPTIONS -w)
endfunction()

# All that is also run under the thread sanitizer: the tests with the label "concurrent".
add_custom_target(ConcurrencyTests)

# tokwatch_test(NAME SOURCES … LINK … [LABELS …]): one test program, its cases known to ctest one by one.
function(tokwatch_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_compile_options(${name} PRIVATE ${TOKWATCH_TEST_OPTIONS})
  target_link_libraries(${name} PRIVATE TokwatchBuildFlags TestSupport ${ARG_LINK} GTest::gmock GTest::gtest_main)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  if("concurrent" IN_LIST ARG_LABELS)
    add_dependencies(ConcurrencyTests ${name})
  endif()
  set(properties TIMEOUT 300)
  if(ARG_LABELS)
    list(APPEND properties LABELS ${ARG_LABELS})
  endif()
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
endfunction()

# tokwatch_quick_test(NAME SOURCES … LINK …): one test program for the folder's tst_*.qml, run without a screen.
function(tokwatch_quick_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_compile_options(${name} PRIVATE ${TOKWATCH_TEST_OPTIONS})
  target_link_libraries(${name} PRIVATE TokwatchBuildFlags TestSupport ${ARG_LINK} Qt6::QuickTest)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests AUTOMOC ON)
  add_test(NAME ${name} COMMAND ${name} -input ${CMAKE_CURRENT_SOURCE_DIR})
  set_tests_properties(${name} PROPERTIES
    TIMEOUT 120 ENVIRONMENT "QT_QPA_PLATFORM=offscreen;QT_QUICK_BACKEND=software;TZ=UTC")
endfunction()
