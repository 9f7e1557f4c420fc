# Settings that hold for all of our own code: warnings, hidden symbols, hardening, sanitizers.
if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_OBJC_VISIBILITY_PRESET hidden)
set(CMAKE_OBJCXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)

# The root of the sources, for includes in quotes. On a file system that does not tell letters' cases apart a compiler
# that looked there for <version> would find the file VERSION.
if(APPLE)
  set(OSTREL_ROOT)
  add_compile_options("SHELL:-iquote \"${PROJECT_SOURCE_DIR}\"")
else()
  set(OSTREL_ROOT "${PROJECT_SOURCE_DIR}")
endif()

add_library(ostrel_settings INTERFACE)
target_link_libraries(ostrel_settings INTERFACE Threads::Threads)
target_compile_options(ostrel_settings INTERFACE -Wall -Wextra -Wshadow
  "$<$<COMPILE_LANGUAGE:CXX>:-Wconversion>")
if(OSTREL_WERROR)
  target_compile_options(ostrel_settings INTERFACE -Werror)
endif()

if(OSTREL_SANITIZE)
  string(REPLACE ";" "," _sanitizers "${OSTREL_SANITIZE}")
  target_compile_options(ostrel_settings INTERFACE
    -fsanitize=${_sanitizers} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  # More optimising of instrumented code nearly doubles the time of a build, and the stacks in reports need no more
  # than line numbers.
  target_compile_options(ostrel_settings INTERFACE -O1 -g1)
  target_link_options(ostrel_settings INTERFACE -fsanitize=${_sanitizers})
elseif(NOT APPLE)
  target_compile_options(ostrel_settings INTERFACE
    "$<$<CONFIG:Release,RelWithDebInfo>:-D_FORTIFY_SOURCE=2;-fstack-protector-strong>")
  target_link_options(ostrel_settings INTERFACE -Wl,-z,relro -Wl,-z,now)
endif()

# The flags of a C++ standard for Objective-C++ as well: CMAKE_OBJCXX_STANDARD has no effect in CMake 3.25.
function(ostrel_cxx_standard target standard)
  set_target_properties(${target} PROPERTIES CXX_STANDARD ${standard} CXX_STANDARD_REQUIRED ON)
  target_compile_options(${target} PRIVATE "$<$<COMPILE_LANGUAGE:OBJCXX>:-std=gnu++${standard}>")
endfunction()

# One part of the library as an object library: ostrel_add_part(NAME STANDARD source...). Both the shared
# library and the tests that look inside it link the same objects.
function(ostrel_add_part name standard)
  add_library(${name} OBJECT ${ARGN})
  ostrel_cxx_standard(${name} ${standard})
  target_include_directories(${name} PUBLIC
    "${PROJECT_SOURCE_DIR}/include" ${OSTREL_ROOT})
  target_link_libraries(${name} PUBLIC ostrel_settings ${OSTREL_QT}::Core)
endfunction()
