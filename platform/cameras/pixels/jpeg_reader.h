// libjpeg-turbo, reading a camera's picture from memory: what the other files know of a JPEG they know from
// it.
#ifndef OSTREL_PLATFORM_CAMERAS_PIXELS_JPEG_READER_H
#define OSTREL_PLATFORM_CAMERAS_PIXELS_JPEG_READER_H

#include "platform/cameras/pixels/picture.h"

#include <csetjmp>
#include <cstdio> // for jpeglib.h
#include <jpeglib.h>

namespace ostrel {
namespace cameras {
namespace pixels {

// Bound to one thread. The bytes must stay as long as it lives. Prints nothing.
class JpegReader {
public:
    JpegReader(const uint8_t* data, size_t bytes);
    ~JpegReader() { jpeg_destroy_decompress(&jpeg_); }
    JpegReader(const JpegReader&) = delete;
    JpegReader& operator=(const JpegReader&) = delete;

    // To the start of the compressed data. To be called once, before everything else.
    Fault readHeader();
    int width() const { return static_cast<int>(jpeg_.image_width); } // pixels
    int height() const { return static_cast<int>(jpeg_.image_height); }
    const jpeg_decompress_struct& header() const { return jpeg_; }

    // What was not read yet.
    const uint8_t* next() const { return source_.next_input_byte; }
    size_t left() const { return source_.bytes_in_buffer; }

    // The first end marker in it, which compressed data cannot hold; its end if there is none.
    const uint8_t* findEnd() const;

    // Decodes the pixels, reduced to a width x height that a power of two from 1 to 8 gives, into rows stride
    // bytes apart. To be called once.
    Fault decode(J_COLOR_SPACE colours, uint8_t* pixels, int width, int height, int stride);

private:
    [[noreturn]] static void failed(j_common_ptr jpeg);
    [[noreturn]] void giveUp(Fault fault);
    static void warned(j_common_ptr jpeg, int level);
    static boolean noMoreSource(j_decompress_ptr jpeg);
    static void skipSource(j_decompress_ptr jpeg, long count);
    void readRows(J_COLOR_SPACE colours, uint8_t* pixels, int width, int height, int stride);

    jpeg_decompress_struct jpeg_ = {};
    jpeg_error_mgr errors_ = {};
    jpeg_source_mgr source_ = {};
    std::jmp_buf escape_;
    Fault fault_ = Fault::None;
    bool headerRead_ = false;
    bool ranOut_ = false; // of bytes, in the compressed data
};

} // namespace pixels
} // namespace cameras
} // namespace ostrel

#endif
