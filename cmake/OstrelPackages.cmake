# Debian packages by CPack: libostrelvideounix1, libostrelvideounix-dev, ostrel-tools, and for C and Python
# libostrelcamera1, libostrelcamera-dev, python3-ostrel. scripts/release configures a
# build with the prefix /usr for them, so that files land where Debian looks.
if(APPLE)
  return()
endif()

# Each package has its licence and its changelog, made from LICENSE and CHANGELOG.md.
set(_copyright "${PROJECT_BINARY_DIR}/package/copyright")
file(READ "${PROJECT_SOURCE_DIR}/LICENSE" _license)
file(WRITE "${_copyright}" "libostrelvideounix ${PROJECT_VERSION}, under this licence:\n\n${_license}")
file(STRINGS "${PROJECT_SOURCE_DIR}/CHANGELOG.md" _heading REGEX "^## ${PROJECT_VERSION} - ")
if(NOT _heading MATCHES "([0-9]+-[0-9]+-[0-9]+)$")
  message(FATAL_ERROR "CHANGELOG.md has no dated heading for the version in VERSION, ${PROJECT_VERSION}")
endif()
execute_process(COMMAND date -R -u -d "${CMAKE_MATCH_1}" OUTPUT_VARIABLE _date OUTPUT_STRIP_TRAILING_WHITESPACE)
set(_maintainer "The libostrelvideounix authors <libostrelvideounix@ostrel.example>")
file(WRITE "${PROJECT_BINARY_DIR}/package/changelog.Debian"
  "ostrelvideounix (${PROJECT_VERSION}-1) unstable; urgency=medium\n\n"
  "  * Release ${PROJECT_VERSION}; CHANGELOG.md of the source tells what changed.\n\n"
  " -- ${_maintainer}  ${_date}\n")
execute_process(COMMAND gzip -9nf "${PROJECT_BINARY_DIR}/package/changelog.Debian")

function(ostrel_package_documents component package)
  install(FILES "${PROJECT_BINARY_DIR}/package/copyright" "${PROJECT_BINARY_DIR}/package/changelog.Debian.gz"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${package}" COMPONENT ${component})
endfunction()
ostrel_package_documents(library libostrelvideounix1)
ostrel_package_documents(development libostrelvideounix-dev)
ostrel_package_documents(tools ostrel-tools)
ostrel_package_documents(c libostrelcamera1)
ostrel_package_documents(c_development libostrelcamera-dev)
ostrel_package_documents(python python3-ostrel)

# Qt refuses to compile without -fPIC, so a client that asks pkg-config alone must get it there.
file(WRITE "${PROJECT_BINARY_DIR}/package/lintian-overrides"
  "libostrelvideounix-dev: pkg-config-bad-directive -fPIC *\n")
install(FILES "${PROJECT_BINARY_DIR}/package/lintian-overrides" RENAME libostrelvideounix-dev
  DESTINATION "${CMAKE_INSTALL_DATADIR}/lintian/overrides" COMPONENT development)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ostrelvideounix)
set(CPACK_PACKAGE_VENDOR "The libostrelvideounix authors")
set(CPACK_PACKAGE_CONTACT "${_maintainer}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/compress-manuals.cmake")
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL library development tools c c_development python)
set(CPACK_COMPONENTS_GROUPING IGNORE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
if(CMAKE_CROSSCOMPILING AND CMAKE_LIBRARY_ARCHITECTURE)
  # CPack and dpkg-shlibdeps would take this machine's architecture for the target's.
  execute_process(COMMAND dpkg-architecture -t ${CMAKE_LIBRARY_ARCHITECTURE} -q DEB_HOST_ARCH
    OUTPUT_VARIABLE CPACK_DEBIAN_PACKAGE_ARCHITECTURE OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  set(CPACK_PROJECT_CONFIG_FILE "${PROJECT_BINARY_DIR}/package/target.cmake")
  file(WRITE "${CPACK_PROJECT_CONFIG_FILE}" "set(ENV{DEB_HOST_ARCH} ${CPACK_DEBIAN_PACKAGE_ARCHITECTURE})\n")
endif()
set(_same_version "libostrelvideounix1 (= ${PROJECT_VERSION}-1)")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libostrelvideounix1)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
# Written here, since those that CPack makes run ldconfig from scripts, where Debian wants its trigger.
file(WRITE "${PROJECT_BINARY_DIR}/package/triggers" "activate-noawait ldconfig\n")
file(WRITE "${PROJECT_BINARY_DIR}/package/shlibs"
  "libostrelvideounix ${PROJECT_VERSION_MAJOR} libostrelvideounix1 (>= ${PROJECT_VERSION})\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA
  "${PROJECT_BINARY_DIR}/package/triggers" "${PROJECT_BINARY_DIR}/package/shlibs")
# Loaded where it is installed.
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SUGGESTS "libpipewire-0.3-0")
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "camera capture, frame conversion and scaling
Lists the cameras of a machine, captures frames from one of them, hands out
the newest when asked, converts between the BGRA, RGB24, YUY2 and I420 pixel
layouts and scales between 320x240, 640x480 and 1280x720.

Works with V4L2 cameras, with those that PipeWire offers, and with virtual
cameras made by the program.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libostrelvideounix-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
if(OSTREL_QT STREQUAL "Qt5")
  set(_qt_development qtbase5-dev)
else()
  set(_qt_development qt6-base-dev)
endif()
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${_same_version}, ${_qt_development}")
set(_objective_cxx "gobjc++")
if(OSTREL_FOUNDATION STREQUAL "gnustep")
  string(APPEND _objective_cxx ", libgnustep-base-dev")
endif()
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "${_objective_cxx}")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "camera capture library, development files
Headers, the link to the library, and the files by which CMake and pkg-config
find it.

Objective-C++ programs that use the capture session class need what is
suggested as well.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME ostrel-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION video)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${_same_version}")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "list cameras, take pictures, record videos
The command line ostrel-camera lists the cameras of the machine, saves
pictures, records videos, sets controls and serves the live picture to
browsers of this machine. Where the package was built with Qt's widgets, the
window ostrel-viewer shows it.")

set(CPACK_DEBIAN_C_PACKAGE_NAME libostrelcamera1)
set(CPACK_DEBIAN_C_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_C_PACKAGE_DEPENDS "${_same_version}")
file(WRITE "${PROJECT_BINARY_DIR}/package/c/shlibs"
  "libostrelcamera ${PROJECT_VERSION_MAJOR} libostrelcamera1 (>= ${PROJECT_VERSION})\n")
set(CPACK_DEBIAN_C_PACKAGE_CONTROL_EXTRA
  "${PROJECT_BINARY_DIR}/package/triggers" "${PROJECT_BINARY_DIR}/package/c/shlibs")
set(CPACK_COMPONENT_C_DESCRIPTION "camera capture with a C interface
Lists the cameras of a machine and captures frames from them, for programs in
C and in every language that can call C.

Frames come at the size and in the layout that the program asks for.")

set(CPACK_DEBIAN_C_DEVELOPMENT_PACKAGE_NAME libostrelcamera-dev)
set(CPACK_DEBIAN_C_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_C_DEVELOPMENT_PACKAGE_DEPENDS "libostrelcamera1 (= ${PROJECT_VERSION}-1)")
set(CPACK_COMPONENT_C_DEVELOPMENT_DESCRIPTION "camera capture with a C interface, development files
The header, the link to the library, and the files by which CMake and
pkg-config find it.

No other development package is needed.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-ostrel)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
  "python3 (>= 3.9), python3-numpy, libostrelcamera1 (>= ${PROJECT_VERSION}-1)")
# As Debian's own helper writes them: the byte code is made at the installation and removed before the files.
file(WRITE "${PROJECT_BINARY_DIR}/package/python/postinst"
  "#!/bin/sh\nset -e\nif command -v py3compile >/dev/null; then py3compile -p python3-ostrel; fi\n")
file(WRITE "${PROJECT_BINARY_DIR}/package/python/prerm"
  "#!/bin/sh\nset -e\nif command -v py3clean >/dev/null; then py3clean -p python3-ostrel; fi\n")
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
  "${PROJECT_BINARY_DIR}/package/python/postinst" "${PROJECT_BINARY_DIR}/package/python/prerm")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION "camera frames as numpy arrays
Lists the cameras of a machine and captures from them: the newest frame, at
the size that the program asks for, by an identifier that outlasts a reboot.

Works with asyncio, and without hardware by cameras made by the program.")
include(CPack)
