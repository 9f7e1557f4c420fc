# What `cmake --install` puts where, in components: library, development, tools; c, c_development and python are in
# OstrelInstallBindings.
include(CMakePackageConfigHelpers)
set(_cmake_dir "${CMAKE_INSTALL_LIBDIR}/cmake/OstrelVideoUnix")

install(TARGETS ostrelvideounix EXPORT OstrelVideoUnixTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT library NAMELINK_COMPONENT development)

# Headers
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/ostrel" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
  COMPONENT development FILES_MATCHING PATTERN "*.h" PATTERN "camera_c.h" EXCLUDE)
# The published framework names, for Objective-C++ clients of capture_session.h: those that the system does not have.
set(_frameworks)
if(OSTREL_QTKIT STREQUAL "own")
  list(APPEND _frameworks QTKit)
endif()
if(NOT APPLE)
  list(APPEND _frameworks CoreVideo)
endif()
if(OSTREL_FOUNDATION STREQUAL "own")
  list(APPEND _frameworks Foundation)
endif()
foreach(_framework IN LISTS _frameworks)
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/platform/${_framework}/include/${_framework}"
    DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/ostrel/framework" COMPONENT development)
endforeach()

# find_package(OstrelVideoUnix)
install(EXPORT OstrelVideoUnixTargets NAMESPACE Ostrel:: DESTINATION "${_cmake_dir}" COMPONENT development)
configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/OstrelVideoUnixConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/OstrelVideoUnixConfig.cmake" INSTALL_DESTINATION "${_cmake_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/OstrelVideoUnixConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/OstrelVideoUnixConfig.cmake"
  "${PROJECT_BINARY_DIR}/OstrelVideoUnixConfigVersion.cmake" DESTINATION "${_cmake_dir}" COMPONENT development)

# pkg-config. The prefix is found from the file's own place, so that an installed tree can be moved.
file(RELATIVE_PATH OSTREL_PC_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" OSTREL_PC_PREFIX "${OSTREL_PC_PREFIX}")
configure_file("${CMAKE_CURRENT_LIST_DIR}/ostrelvideounix.pc.in" "${PROJECT_BINARY_DIR}/ostrelvideounix.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/ostrelvideounix.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
  COMPONENT development)

# For the leak checkers of clients
install(FILES "${PROJECT_SOURCE_DIR}/capture/leaks.supp" "${PROJECT_SOURCE_DIR}/capture/valgrind.supp"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/ostrelvideounix" COMPONENT development)

# Tools. They find the library beside them wherever the tree stands; under /usr the system's linker does, and
# Debian's policy forbids a path in the program.
foreach(tool ostrel-camera ostrel-viewer)
  if(TARGET ${tool})
    if(NOT APPLE)
      set(_place "$ORIGIN/..")
    elseif(tool STREQUAL "ostrel-viewer") # a bundle: ostrel-viewer.app/Contents/MacOS/ostrel-viewer
      set(_place "@loader_path/../../../..")
    else()
      set(_place "@loader_path/..")
    endif()
    set_target_properties(${tool} PROPERTIES INSTALL_RPATH "${_place}/${CMAKE_INSTALL_LIBDIR}")
    install(TARGETS ${tool} RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools
      BUNDLE DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools)
    install(FILES "${PROJECT_SOURCE_DIR}/docs/man/${tool}.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1"
      COMPONENT tools)
    install(FILES "${PROJECT_SOURCE_DIR}/docs/completion/${tool}"
      DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT tools)
    install(CODE "
      if(CMAKE_INSTALL_PREFIX STREQUAL \"/usr\")
        file(RPATH_REMOVE FILE \"\$ENV{DESTDIR}/usr/${CMAKE_INSTALL_BINDIR}/${tool}\")
      endif()" COMPONENT tools)
  endif()
endforeach()

if(TARGET ostrelcamera)
  include(OstrelInstallBindings)
endif()
