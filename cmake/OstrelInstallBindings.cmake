# The C library and the Python package, each in components of their own: who calls C needs no Qt headers.
set(_cmake_dir "${CMAKE_INSTALL_LIBDIR}/cmake/OstrelCamera")

install(TARGETS ostrelcamera EXPORT OstrelCameraTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT c NAMELINK_COMPONENT c_development)
# Beside the other library wherever the tree stands; under /usr the system's linker finds it.
install(CODE "
  if(CMAKE_INSTALL_PREFIX STREQUAL \"/usr\")
    file(RPATH_REMOVE FILE \"\$ENV{DESTDIR}/usr/${CMAKE_INSTALL_LIBDIR}/libostrelcamera.so.${PROJECT_VERSION}\")
  endif()" COMPONENT c)
install(FILES "${PROJECT_SOURCE_DIR}/include/ostrel/camera_c.h"
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/ostrel" COMPONENT c_development)

# find_package(OstrelCamera)
install(EXPORT OstrelCameraTargets NAMESPACE Ostrel:: DESTINATION "${_cmake_dir}" COMPONENT c_development)
configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/OstrelCameraConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/OstrelCameraConfig.cmake" INSTALL_DESTINATION "${_cmake_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/OstrelCameraConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/OstrelCameraConfig.cmake"
  "${PROJECT_BINARY_DIR}/OstrelCameraConfigVersion.cmake" DESTINATION "${_cmake_dir}" COMPONENT c_development)
configure_file("${CMAKE_CURRENT_LIST_DIR}/ostrelcamera.pc.in" "${PROJECT_BINARY_DIR}/ostrelcamera.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/ostrelcamera.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
  COMPONENT c_development)

# Where Debian's Python looks below /usr; elsewhere PYTHONPATH names it.
set(_packages "lib/python3/dist-packages")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/bindings/python/ostrel" DESTINATION "${_packages}" COMPONENT python
  FILES_MATCHING PATTERN "*.py" PATTERN "py.typed" PATTERN "__pycache__" EXCLUDE)
# By it pip knows that the package is there.
file(WRITE "${PROJECT_BINARY_DIR}/ostrel-${PROJECT_VERSION}.egg-info"
  "Metadata-Version: 2.1\nName: ostrel\nVersion: ${PROJECT_VERSION}\nRequires-Dist: numpy\n")
install(FILES "${PROJECT_BINARY_DIR}/ostrel-${PROJECT_VERSION}.egg-info" DESTINATION "${_packages}" COMPONENT python)
