# ostrel_add_test(NAME [PARTS part...] [LABELS label...] SOURCES source...)
# One GoogleTest program, registered with ctest. It links the given parts of the library (so that it can look
# inside), or the shared library alone when none is given.
find_package(GTest REQUIRED)
include(GoogleTest)

function(ostrel_add_test name)
  cmake_parse_arguments(ARG "" "" "PARTS;LABELS;SOURCES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  ostrel_cxx_standard(${name} 17)
  set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
  target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/tests")
  target_link_libraries(${name} PRIVATE ostrel_settings GTest::gtest GTest::gtest_main)
  if(ARG_PARTS)
    target_link_libraries(${name} PRIVATE ${ARG_PARTS})
  else()
    target_link_libraries(${name} PRIVATE Ostrel::VideoUnix)
  endif()
  if(NOT ARG_LABELS)
    set(ARG_LABELS unit)
  endif()
  gtest_discover_tests(${name} TEST_PREFIX "${name}." DISCOVERY_TIMEOUT 60
    PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT 120)
endfunction()
