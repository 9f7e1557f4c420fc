# ostrel_add_fuzzer(NAME CORPUS folder [PARTS part...] SOURCES source...)
# One libFuzzer program that links the given parts of the library. ctest has it take each file of its corpus once
# (label fuzz); by hand it searches on for as long as it is let:
#   build/fuzz/fuzz/NAME -max_total_time=600 /tmp/new-inputs fuzz/corpus/NAME
if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  message(FATAL_ERROR "libFuzzer comes with clang: configure with the preset fuzz or -DCMAKE_CXX_COMPILER=clang++")
endif()
# Everything that is built reports to the fuzzer which branches it took.
target_compile_options(ostrel_settings INTERFACE -fsanitize=fuzzer-no-link)

function(ostrel_add_fuzzer name)
  cmake_parse_arguments(ARG "" "CORPUS" "PARTS;SOURCES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  ostrel_cxx_standard(${name} 17)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/fuzz")
  target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}")
  target_link_libraries(${name} PRIVATE ostrel_settings ${ARG_PARTS})
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)

  file(GLOB corpus CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/${ARG_CORPUS}/*")
  if(NOT corpus)
    message(FATAL_ERROR "${name}: no corpus in ${CMAKE_CURRENT_SOURCE_DIR}/${ARG_CORPUS}")
  endif()
  if(OSTREL_CONFIGURATION)
    set(prefix "${OSTREL_CONFIGURATION}.")
  endif()
  add_test(NAME ${prefix}${name}.corpus COMMAND ${name} ${corpus})
  set_tests_properties(${prefix}${name}.corpus PROPERTIES LABELS "fuzz" TIMEOUT 300)
endfunction()
