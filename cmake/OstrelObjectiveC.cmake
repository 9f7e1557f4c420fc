# Objective-C and Objective-C++. On Apple these are the system's own; elsewhere gcc's, with its runtime. clang cannot
# stand in for gcc there: exceptions that it throws through gcc's runtime abort the program.
if(CMAKE_CROSSCOMPILING AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # gcc of this machine makes programs for this machine; g++ of the target compiles Objective-C as well.
  set(CMAKE_OBJC_COMPILER "${CMAKE_CXX_COMPILER}" CACHE FILEPATH "Objective-C compiler")
  set(CMAKE_OBJCXX_COMPILER "${CMAKE_CXX_COMPILER}" CACHE FILEPATH "Objective-C++ compiler")
elseif(CMAKE_CROSSCOMPILING AND NOT (CMAKE_OBJC_COMPILER AND CMAKE_OBJCXX_COMPILER))
  message(FATAL_ERROR "The toolchain file names no gcc: it must set CMAKE_OBJC_COMPILER and CMAKE_OBJCXX_COMPILER")
elseif(NOT APPLE)
  find_program(OSTREL_GCC NAMES gcc-12 gcc REQUIRED)
  find_program(OSTREL_GXX NAMES g++-12 g++ REQUIRED)
  set(CMAKE_OBJC_COMPILER "${OSTREL_GCC}" CACHE FILEPATH "Objective-C compiler")
  set(CMAKE_OBJCXX_COMPILER "${OSTREL_GXX}" CACHE FILEPATH "Objective-C++ compiler")
endif()
enable_language(OBJC)
enable_language(OBJCXX)

# The frameworks that the library is written against: Foundation, CoreVideo and QTKit by their published names. Each of
# ours has an include root to itself, since it would hide the system's where that is the one to use.
add_library(ostrel_foundation INTERFACE)

# QTKit left macOS with 10.15. Our own serves everywhere else; the system's is there for Macs that still have it.
set(OSTREL_QTKIT own CACHE STRING "QTKit to build with: own, or the system's on macOS before 10.15 (system)")
set_property(CACHE OSTREL_QTKIT PROPERTY STRINGS own system)
if(OSTREL_QTKIT STREQUAL "own")
  target_include_directories(ostrel_foundation INTERFACE "${PROJECT_SOURCE_DIR}/platform/QTKit/include")
elseif(NOT APPLE OR NOT OSTREL_QTKIT STREQUAL "system")
  message(FATAL_ERROR "OSTREL_QTKIT is own or, on macOS, system, not ${OSTREL_QTKIT}")
endif()

if(APPLE)
  set(OSTREL_FOUNDATION system) # and CoreVideo
  target_compile_options(ostrel_foundation INTERFACE
    "$<$<COMPILE_LANGUAGE:OBJC,OBJCXX>:-fno-objc-arc>")
  target_link_libraries(ostrel_foundation INTERFACE "-framework Foundation" "-framework CoreVideo")
  if(OSTREL_QTKIT STREQUAL "system")
    target_compile_definitions(ostrel_foundation INTERFACE OSTREL_SYSTEM_QTKIT)
    target_link_libraries(ostrel_foundation INTERFACE "-framework QTKit")
  else()
    target_link_libraries(ostrel_foundation INTERFACE
      "-framework CoreFoundation" "-framework CoreMedia" "-framework AVFoundation")
  endif()
  return()
endif()
target_include_directories(ostrel_foundation INTERFACE "${PROJECT_SOURCE_DIR}/platform/CoreVideo/include")

# Foundation: the part that the library needs is its own (platform/Foundation), or GNUstep base is taken, for programs
# that use that themselves.
set(OSTREL_FOUNDATION own CACHE STRING "Foundation to build with where the system has none: own or gnustep")
set_property(CACHE OSTREL_FOUNDATION PROPERTY STRINGS own gnustep)

set(_sysroot)
if(CMAKE_SYSROOT)
  set(_sysroot "--sysroot=${CMAKE_SYSROOT}")
endif()
execute_process(COMMAND ${CMAKE_OBJCXX_COMPILER} ${_sysroot} -print-file-name=libobjc.so
  OUTPUT_VARIABLE OSTREL_LIBOBJC OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT IS_ABSOLUTE "${OSTREL_LIBOBJC}")
  message(FATAL_ERROR "libobjc of ${CMAKE_OBJCXX_COMPILER} not found (Debian: package gobjc++)")
endif()
# -fobjc-call-cxx-cdtors: without it C++ instance variables are never constructed.
target_compile_options(ostrel_foundation INTERFACE
  "$<$<COMPILE_LANGUAGE:OBJC,OBJCXX>:-fno-strict-aliasing;-fexceptions;-fobjc-exceptions;-pthread;-fconstant-string-class=NSConstantString>"
  "$<$<COMPILE_LANGUAGE:OBJCXX>:-fobjc-call-cxx-cdtors>")

if(OSTREL_FOUNDATION STREQUAL "own")
  target_compile_definitions(ostrel_foundation INTERFACE OSTREL_OWN_FOUNDATION)
  target_include_directories(ostrel_foundation INTERFACE "${PROJECT_SOURCE_DIR}/platform/Foundation/include" "${PROJECT_SOURCE_DIR}/include")
  target_link_libraries(ostrel_foundation INTERFACE $<TARGET_OBJECTS:ostrel_own_foundation>)
elseif(OSTREL_FOUNDATION STREQUAL "gnustep")
  find_path(GNUSTEP_INCLUDE_DIR Foundation/Foundation.h PATH_SUFFIXES GNUstep REQUIRED)
  find_library(GNUSTEP_BASE_LIBRARY gnustep-base REQUIRED)
  # GNUstep's headers are not free of warnings; SYSTEM keeps ours readable.
  target_include_directories(ostrel_foundation SYSTEM INTERFACE "${GNUSTEP_INCLUDE_DIR}")
  target_compile_definitions(ostrel_foundation INTERFACE
    "$<$<COMPILE_LANGUAGE:OBJC,OBJCXX>:GNUSTEP;GNUSTEP_BASE_LIBRARY=1;GNU_RUNTIME=1;_NATIVE_OBJC_EXCEPTIONS>")
  target_link_libraries(ostrel_foundation INTERFACE "${GNUSTEP_BASE_LIBRARY}")
else()
  message(FATAL_ERROR "OSTREL_FOUNDATION is own or gnustep, not ${OSTREL_FOUNDATION}")
endif()
target_link_libraries(ostrel_foundation INTERFACE "${OSTREL_LIBOBJC}")
