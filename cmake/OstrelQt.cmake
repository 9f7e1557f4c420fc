# Finds Qt: the newest of 6 and 5 unless OSTREL_QT_MAJOR names one. Sets OSTREL_QT (Qt6 or Qt5), so
# that targets are written ${OSTREL_QT}::Core.
set(OSTREL_QT_MAJOR "" CACHE STRING "Qt major version to build with: 5, 6, or empty for the newest found")
set_property(CACHE OSTREL_QT_MAJOR PROPERTY STRINGS "" 5 6)

if(OSTREL_QT_MAJOR)
  set(OSTREL_QT Qt${OSTREL_QT_MAJOR})
  find_package(${OSTREL_QT} REQUIRED COMPONENTS Core)
else()
  find_package(QT NAMES Qt6 Qt5 REQUIRED COMPONENTS Core)
  set(OSTREL_QT Qt${QT_VERSION_MAJOR})
  find_package(${OSTREL_QT} REQUIRED COMPONENTS Core)
endif()
message(STATUS "Qt: ${${OSTREL_QT}_VERSION}")

# The library's own subsystems are C++11, so that they build against old Qt series as well; the headers
# of Qt 6 themselves need C++17.
if(OSTREL_QT STREQUAL "Qt5")
  set(OSTREL_LIBRARY_CXX_STANDARD 11)
else()
  set(OSTREL_LIBRARY_CXX_STANDARD 17)
endif()
