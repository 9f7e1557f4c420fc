// libjpeg's errors leave it by longjmp, which passes over destructors: no object with one may live in the
// function that it returns to.
#include "apps/camera/jpeg/jpeg_encoder.h"

#include "apps/common/failure.h"

#include <csetjmp>
#include <cstdio>

#include <jpeglib.h> // needs cstdio before

namespace ostrel::apps::cli {

namespace {

struct Work {
    jpeg_compress_struct jpeg = {};
    jpeg_error_mgr errors = {};
    jpeg_destination_mgr destination = {};
    std::jmp_buf escape;
};

void leave(j_common_ptr jpeg) {
    std::longjmp(static_cast<Work*>(jpeg->client_data)->escape, 1);
}

void silent(j_common_ptr) {}
void startOrEnd(j_compress_ptr) {}

// The memory is made large enough for every picture.
boolean noMoreRoom(j_compress_ptr jpeg) {
    leave(reinterpret_cast<j_common_ptr>(jpeg));
    return FALSE;
}

// What no picture exceeds, by the encoder's own reckoning for 4:4:4 and noise.
std::size_t roomFor(const Size& size) {
    const auto padded = [](int side) { return (static_cast<std::size_t>(side) + 15) / 16 * 16; };
    return padded(size.width) * padded(size.height) * 6 + 2048;
}

void compress(Work& work, const uint8_t* bgra, const Size& size, int quality) {
    jpeg_compress_struct& jpeg = work.jpeg;
    jpeg_create_compress(&jpeg); // leaves the error handler and the client's data as they are
    jpeg.dest = &work.destination;
    jpeg.image_width = static_cast<JDIMENSION>(size.width);
    jpeg.image_height = static_cast<JDIMENSION>(size.height);
    jpeg.input_components = 4;
    jpeg.in_color_space = JCS_EXT_BGRX;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, quality, TRUE);
    jpeg_start_compress(&jpeg, TRUE);
    const std::size_t row = static_cast<std::size_t>(size.width) * 4;
    while (jpeg.next_scanline < jpeg.image_height) {
        JSAMPROW rows = const_cast<JSAMPROW>(bgra + row * jpeg.next_scanline);
        jpeg_write_scanlines(&jpeg, &rows, 1);
    }
    jpeg_finish_compress(&jpeg);
}

bool compressed(Work& work, const uint8_t* bgra, const Size& size, int quality) {
    if (setjmp(work.escape)) {
        jpeg_destroy_compress(&work.jpeg);
        return false;
    }
    compress(work, bgra, size, quality);
    jpeg_destroy_compress(&work.jpeg);
    return true;
}

} // namespace

JpegEncoder::JpegEncoder(const Size& size, int quality)
    : size_(size), quality_(quality), room_(roomFor(size)), memory_(new uint8_t[room_]) {}

JpegEncoder::Jpeg JpegEncoder::encode(const uint8_t* bgra) {
    Work work;
    work.jpeg.err = jpeg_std_error(&work.errors);
    work.errors.error_exit = leave;
    work.errors.output_message = silent;
    work.destination.next_output_byte = memory_.get();
    work.destination.free_in_buffer = room_;
    work.destination.init_destination = startOrEnd;
    work.destination.empty_output_buffer = noMoreRoom;
    work.destination.term_destination = startOrEnd;
    work.jpeg.client_data = &work;
    if (!compressed(work, bgra, size_, quality_))
        throw Failure(EXIT_INTERNAL, "the picture of " + toString(size_) + " cannot be written as JPEG");
    return {memory_.get(), room_ - work.destination.free_in_buffer};
}

} // namespace ostrel::apps::cli
