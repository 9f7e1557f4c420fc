// Makes a picture that any program reads of what a camera sends.
#ifndef OSTREL_PLATFORM_CAMERAS_PIXELS_JPEG_TABLES_H
#define OSTREL_PLATFORM_CAMERAS_PIXELS_JPEG_TABLES_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ostrel {
namespace cameras {
namespace pixels {

// The picture from its start marker to its end marker, which is added if it is missing, with the standard
// Huffman tables in front of the compressed data if it refers to tables that it does not define: most cameras
// leave them out. The picture itself is not touched. Empty when the headers cannot be read. Re-entrant.
std::vector<uint8_t> completeJpeg(const uint8_t* data, size_t bytes);

} // namespace pixels
} // namespace cameras
} // namespace ostrel

#endif
