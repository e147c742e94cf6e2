# One target a folder, named as the folder without its slashes. Headers are included by their full path
# ("TokwatchCore/Store/UsageStore.h") through a directory of links in which nothing but the target's own folder can be
# seen, so that an include which the declared dependencies do not allow fails to compile.

add_library(TokwatchBuildFlags INTERFACE)
target_compile_options(TokwatchBuildFlags INTERFACE
  # g++ 12 sees overlapping copies in std::string where there are none, hence no -Wrestrict.
  -Wall -Wextra -Wno-restrict -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
  # g++ 14 takes the members of what std::optional::emplace makes for uninitialised; g++ 12 keeps watch over this one.
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_GREATER_EQUAL:$<CXX_COMPILER_VERSION>,13>>:-Wno-maybe-uninitialized>)
if(CMAKE_UNITY_BUILD)
  # A folder is compiled as one file, but for debugging, in a third of the time: a name in an anonymous namespace stands
  # once in a folder, or its file is ALONE. The compiler then takes sources for headers.
  target_compile_options(TokwatchBuildFlags INTERFACE -Wno-subobject-linkage)
endif()
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
# A linker that takes tenths of a second for what others take seconds for, where there is one; packages come from the
# system's own, whatever else is installed.
find_program(MOLD mold)
if(MOLD AND NOT TOKWATCH_PACKAGES)
  add_link_options(-fuse-ld=mold)
endif()
# What tests are compiled with: they are to start soon, not to run fast. Behaviour that is undefined is looked for in
# the rooms, faults of memory everywhere.
set(TOKWATCH_TEST_OPTIONS $<$<NOT:$<CONFIG:Debug>>:-O0>)
if(TOKWATCH_SANITIZE MATCHES "undefined")
  list(APPEND TOKWATCH_TEST_OPTIONS -fno-sanitize=undefined)
endif()

# tokwatch_prefer_archives(PACKAGE): its static libraries where they lie beside the shared ones, which is so on Debian.
# Abseil is a dozen small ones, and to load them takes a tenth of the time of a short command; to load SQLite takes half
# of the shortest's.
function(tokwatch_prefer_archives package)
  get_property(targets DIRECTORY PROPERTY IMPORTED_TARGETS)
  list(FILTER targets INCLUDE REGEX "^${package}::")
  foreach(target IN LISTS targets)
    foreach(location IMPORTED_LOCATION_NONE IMPORTED_LOCATION)
      get_target_property(library ${target} ${location})
      string(REGEX REPLACE "\\.so[.0-9]*$" ".a" archive "${library}")
      if(library AND EXISTS "${archive}")
        set_target_properties(${target} PROPERTIES ${location} "${archive}")
      endif()
    endforeach()
  endforeach()
endfunction()

# tokwatch_export(TARGET SCOPE): the includes of this folder's headers.
function(tokwatch_export target scope)
  file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
  set(view ${PROJECT_BINARY_DIR}/include/${target})
  cmake_path(GET folder PARENT_PATH parent)
  file(MAKE_DIRECTORY ${view}/${parent})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${view}/${folder} SYMBOLIC)
  target_include_directories(${target} ${scope} ${view})
endfunction()

# tokwatch_use(TARGET SCOPE dependencies …): stops at one that is not there yet, as folders may not need each other in
# circles.
function(tokwatch_use target scope)
  foreach(dependency IN LISTS ARGN)
    if(dependency MATCHES "^(Platform|Tokwatch|Kivo|Test)" AND NOT TARGET ${dependency})
      message(FATAL_ERROR "${target} needs ${dependency}, which comes later or not at all")
    endif()
  endforeach()
  target_link_libraries(${target} ${scope} ${ARGN})
endfunction()

# tokwatch_folder(): sets `name` to the target's and `sources` to what this folder has for the compiler.
macro(tokwatch_folder)
  file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
  string(REPLACE "/" "" name ${folder})
  file(GLOB sources CONFIGURE_DEPENDS RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} *.cpp *.h)
endmacro()

# tokwatch_keep_alone(sources …): where folders are compiled as one file, those that see how records are coded stay out:
# they would code their neighbours' records, too, whose fields are named elsewhere.
function(tokwatch_keep_alone)
  foreach(source IN LISTS ARGN)
    file(STRINGS ${source} coding REGEX "^#include \".*/RecordFields.h\"")
    if(coding)
      set_source_files_properties(${source} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
    endif()
  endforeach()
endfunction()

# tokwatch_module([MOC] [EXCEPT sources of programs …] [ALONE sources …] [PUBLIC what the headers need …] [PRIVATE …]): the
# folder as a library; MOC where it has a Q_OBJECT. ALONE stay out where folders are compiled as one file: their parts
# have the names of a neighbour's, or one half of a folder needs the toolkit and the other is in a program that has to
# do without (Tokwatch/Preferences, Tokwatch/Widget).
function(tokwatch_module)
  cmake_parse_arguments(ARG "MOC" "" "PUBLIC;PRIVATE;EXCEPT;ALONE" ${ARGN})
  tokwatch_folder()
  if(ARG_EXCEPT)
    list(REMOVE_ITEM sources ${ARG_EXCEPT})
  endif()
  if(NOT sources MATCHES "[.]cpp")
    add_library(${name} INTERFACE)
    tokwatch_export(${name} INTERFACE)
    tokwatch_use(${name} INTERFACE ${ARG_PUBLIC})
    return()
  endif()
  add_library(${name} STATIC ${sources})
  tokwatch_keep_alone(${sources})
  set_source_files_properties(${ARG_ALONE} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
  set_target_properties(${name} PROPERTIES AUTOMOC ${ARG_MOC})
  tokwatch_export(${name} PUBLIC)
  tokwatch_use(${name} PUBLIC ${ARG_PUBLIC})
  tokwatch_use(${name} PRIVATE TokwatchBuildFlags ${ARG_PRIVATE})
endfunction()

# tokwatch_command(NAME LIBRARY): a program for terminals from this folder's main.cpp, with no more libraries than what it runs
# needs: the rooms name more.
function(tokwatch_command name library)
  add_executable(${name} main.cpp)
  target_link_libraries(${name} PRIVATE TokwatchBuildFlags ${library})
  # A linker that takes what is needed from archives in their order: mold takes a template's instance from any of them,
  # and with it a member that needs a library which nobody else does.
  target_link_options(${name} PRIVATE -fuse-ld=bfd -Wl,--as-needed)
  set(place ${CMAKE_INSTALL_BINDIR})
  if(NOT name STREQUAL "tokwatch")
    add_dependencies(tokwatch ${name}) # which becomes it
    set(place ${TOKWATCH_PROGRAMS})
  endif()
  install(TARGETS ${name} RUNTIME DESTINATION ${place})
endfunction()

# tokwatch_compile_written(TARGET): what the QML compiler writes, as one file, in a fifth of the time; as that of a system
# header, since it is not ours to warn about.
function(tokwatch_compile_written target)
  get_target_property(written ${target} SOURCES)
  list(FILTER written INCLUDE REGEX "/\\.rcc/qmlcache/.*\\.cpp$")
  if(NOT written)
    return()
  endif()
  set_source_files_properties(${written} PROPERTIES HEADER_FILE_ONLY ON)
  list(TRANSFORM written REPLACE "(.+)" "#include \"\\1\"\n")
  string(JOIN "" includes ${written})
  set(together ${CMAKE_CURRENT_BINARY_DIR}/${target}Written)
  file(CONFIGURE OUTPUT ${together}.h CONTENT "#pragma GCC system_header\n${includes}")
  file(CONFIGURE OUTPUT ${together}.cpp CONTENT "#include \"${together}.h\"\n")
  set_source_files_properties(${together}.cpp PROPERTIES SKIP_AUTOGEN ON SKIP_UNITY_BUILD_INCLUSION ON)
  target_sources(${target} PRIVATE ${together}.cpp)
endfunction()

# tokwatch_take(LIBRARY FUNCTION): programs with the library have this function, which takes nothing, whether they call it or not.
function(tokwatch_take library function)
  string(LENGTH ${function} length)
  target_link_options(${library} INTERFACE LINKER:--undefined=_Z${length}${function}v)
endfunction()

# tokwatch_qml_module(URI uri [PUBLIC …] [PRIVATE …]): the folder as a library of QML components and the C++ types beside
# them, compiled ahead. Who links it can import it: no plugin, which is two more files to compile a module.
function(tokwatch_qml_module)
  cmake_parse_arguments(ARG "" "URI" "PUBLIC;PRIVATE" ${ARGN})
  tokwatch_folder()
  file(GLOB components CONFIGURE_DEPENDS RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} *.qml)
  set(CMAKE_AUTOMOC ON)
  string(REPLACE "." "/" path ${ARG_URI})
  # The sanitizers are for our C++, not for what the QML compiler makes: there QML is interpreted.
  set(cache)
  if(TOKWATCH_SANITIZE)
    set(cache NO_CACHEGEN)
  endif()
  get_target_property(compiler Qt6::qmlcachegen LOCATION)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/qmlcachegen.in ${CMAKE_BINARY_DIR}/qmlcachegen @ONLY FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
  qt_add_library(${name} STATIC)
  set_target_properties(${name} PROPERTIES QT_QMLCACHEGEN_EXECUTABLE ${CMAKE_BINARY_DIR}/qmlcachegen)
  qt_add_qml_module(${name}
    OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/qml/${path}
    URI ${ARG_URI}
    VERSION 1.0
    RESOURCE_PREFIX /qt/qml
    NO_PLUGIN
    ${cache}
    SOURCES ${sources}
    QML_FILES ${components})
  tokwatch_export(${name} PUBLIC)
  # The registration of the types, which the toolkit writes, includes them by their bare names.
  target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
  tokwatch_use(${name} PUBLIC Qt6::Quick ${ARG_PUBLIC})
  tokwatch_use(${name} PRIVATE TokwatchBuildFlags ${ARG_PRIVATE})
  tokwatch_compile_written(${name})
  # What makes types and compiled components known runs when the program starts, if it is taken from the archive.
  string(REPLACE "." "_" module ${ARG_URI})
  tokwatch_take(${name} qml_register_types_${module})
  if(NOT cache)
    tokwatch_take(${name} qInitResources_qmlcache_${name})
  endif()
endfunction()

# All that is also run under the thread sanitizer: the tests with the label "concurrent".
add_custom_target(ConcurrencyTests)

# tokwatch_test(NAME SOURCES … [ALONE sources …] LINK … [LABELS …]): one test program, its cases known to ctest one by one.
function(tokwatch_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;ALONE;LINK;LABELS" ${ARGN})
  set_source_files_properties(${ARG_ALONE} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
  add_executable(${name} ${ARG_SOURCES})
  target_compile_options(${name} PRIVATE ${TOKWATCH_TEST_OPTIONS})
  target_link_libraries(${name} PRIVATE TokwatchBuildFlags TestHeaders TestsSupport ${ARG_LINK} GTest::gmock GTest::gtest_main)
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
