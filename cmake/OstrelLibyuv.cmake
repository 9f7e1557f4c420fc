# libyuv has neither a CMake package nor a .pc file on most systems.
find_path(LIBYUV_INCLUDE_DIR libyuv.h REQUIRED)
find_library(LIBYUV_LIBRARY yuv REQUIRED)
add_library(ostrel_libyuv INTERFACE)
target_include_directories(ostrel_libyuv SYSTEM INTERFACE "${LIBYUV_INCLUDE_DIR}")
target_link_libraries(ostrel_libyuv INTERFACE "${LIBYUV_LIBRARY}")
