# ostrel_add_test(NAME [ONE_THREAD] [PARTS part...] [LABELS label...] SOURCES source...)
# One GoogleTest program, registered with ctest. It links the given parts of the library (so that it can look
# inside), or the shared library alone when none is given. ONE_THREAD: neither it nor what it calls has a second
# thread, so the thread sanitizer could find nothing and the test is left out there.
#
# Where OSTREL_CONFIGURATION is set (the presets do that) it prefixes the names of the tests and is a label of each,
# so that the tests of several build folders can be run and told apart in one ctest run (scripts/test).
find_package(GTest REQUIRED)
include(GoogleTest)

set(OSTREL_CONFIGURATION "" CACHE STRING "Name of this configuration among several, for test names and labels")
if(OSTREL_CONFIGURATION)
  set(OSTREL_TEST_PREFIX "${OSTREL_CONFIGURATION}.")
endif()

if(OSTREL_SANITIZE)
  add_library(ostrel_sanitizer_options OBJECT
    "${PROJECT_SOURCE_DIR}/tests/sanitizers/huge_allocations.cpp" "${PROJECT_SOURCE_DIR}/tests/sanitizers/options.cpp")
  target_link_libraries(ostrel_sanitizer_options PRIVATE ostrel_settings ${CMAKE_DL_LIBS})
endif()

# Assertions make large objects: optimising them, and checking them for undefined behaviour as well, took most of the
# time of a build. What they call is optimised and checked as ever.
add_library(ostrel_quick_build INTERFACE)
target_compile_options(ostrel_quick_build INTERFACE -O0 -U_FORTIFY_SOURCE)
if("undefined" IN_LIST OSTREL_SANITIZE)
  target_compile_options(ostrel_quick_build INTERFACE -fno-sanitize=undefined)
endif()

# What every program that belongs to the tests has in common: ostrel_add_test_program(NAME source...)
function(ostrel_add_test_program name)
  add_executable(${name} ${ARGN})
  ostrel_cxx_standard(${name} 17)
  set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
  target_include_directories(${name} PRIVATE ${OSTREL_ROOT} "${PROJECT_SOURCE_DIR}/tests")
  target_link_libraries(${name} PRIVATE ostrel_settings)
  if(OSTREL_SANITIZE)
    target_link_libraries(${name} PRIVATE ostrel_sanitizer_options)
  endif()
endfunction()

function(ostrel_add_test name)
  cmake_parse_arguments(ARG "ONE_THREAD" "" "PARTS;LABELS;SOURCES" ${ARGN})
  if(ARG_ONE_THREAD AND "thread" IN_LIST OSTREL_SANITIZE)
    return()
  endif()
  ostrel_add_test_program(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE GTest::gtest GTest::gtest_main)
  if(ARG_PARTS)
    target_link_libraries(${name} PRIVATE ${ARG_PARTS})
  else()
    target_link_libraries(${name} PRIVATE Ostrel::VideoUnix)
  endif()
  target_link_libraries(${name} PRIVATE ostrel_quick_build)
  if(NOT ARG_LABELS)
    set(ARG_LABELS unit)
  endif()
  # Programs of another machine are not run while they are built, and an emulator takes ten times as long.
  if(CMAKE_CROSSCOMPILING)
    set(_discovery PRE_TEST)
    set(_timeout 600)
  else()
    set(_discovery POST_BUILD)
    set(_timeout 120)
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE ${_discovery} TEST_PREFIX "${OSTREL_TEST_PREFIX}${name}." DISCOVERY_TIMEOUT 60
    PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT ${_timeout})
endfunction()
