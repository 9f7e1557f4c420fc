# The shared library, made of the parts.
set(OSTREL_PARTS ostrel_base ostrel_processing ostrel_devices ostrel_capture ostrel_next_frame)
if(OSTREL_QTKIT STREQUAL "own")
  list(APPEND OSTREL_PARTS ostrel_cameras ostrel_framework)
endif()

add_library(ostrelvideounix SHARED)
foreach(part IN LISTS OSTREL_PARTS)
  target_link_libraries(ostrelvideounix PRIVATE $<BUILD_INTERFACE:${part}>)
endforeach()
target_link_libraries(ostrelvideounix PUBLIC ${OSTREL_QT}::Core)
target_include_directories(ostrelvideounix PUBLIC
  "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>" "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
# LINKER_LANGUAGE: CMake 3.25 gives a library that it links as OBJCXX neither SONAME nor RUNPATH.
set_target_properties(ostrelvideounix PROPERTIES
  VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} LINKER_LANGUAGE CXX
  EXPORT_NAME VideoUnix)
if(NOT APPLE)
  # Objective-C classes cannot be unloaded.
  target_link_options(ostrelvideounix PRIVATE -Wl,-z,nodelete
    "-Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/exports.map")
  set_property(TARGET ostrelvideounix APPEND PROPERTY LINK_DEPENDS
    "${PROJECT_SOURCE_DIR}/cmake/exports.map")
  if(NOT OSTREL_SANITIZE) # the sanitizers' own functions come with the program
    target_link_options(ostrelvideounix PRIVATE -Wl,--no-undefined)
  endif()
endif()
add_library(Ostrel::VideoUnix ALIAS ostrelvideounix)
