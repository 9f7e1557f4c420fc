# For 64-bit ARM (Raspberry Pi and the like) on a Debian with the target's libraries beside its own; CONTRIBUTING.md
# says which packages those are.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

# Whose .pc files pkg-config reads.
set(ENV{PKG_CONFIG_LIBDIR} "/usr/lib/aarch64-linux-gnu/pkgconfig:/usr/share/pkgconfig")

# Qt's own tools (moc) run here.
set(QT_HOST_PATH /usr CACHE PATH "Qt of this machine")
set(QT_HOST_PATH_CMAKE_DIR "/usr/lib/${CMAKE_HOST_SYSTEM_PROCESSOR}-linux-gnu/cmake" CACHE PATH "Its CMake packages")

# Tests run where the emulator is installed.
find_program(_emulator NAMES qemu-aarch64-static qemu-aarch64 NO_CACHE)
if(_emulator)
  set(CMAKE_CROSSCOMPILING_EMULATOR "${_emulator}")
endif()
