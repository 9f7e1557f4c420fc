// libjpeg-turbo is called directly and not through libyuv: libyuv takes a JPEG's full-range numbers for
// limited-range ones, so that blacks and whites are cut off (measured: B 3, G 35, R 30 became 0, 22, 16). It
// takes 10 % longer at full size and a fraction of that at a half or less, where it decodes fewer pixels.
#include "platform/cameras/pixels/jpeg_decode.h"

#include <csetjmp>
#include <cstdio>
#include <jerror.h>
#include <jpeglib.h>

namespace ostrel {
namespace cameras {
namespace pixels {

namespace {

struct Decoder {
    jpeg_decompress_struct jpeg;
    jpeg_error_mgr errors;
    jpeg_source_mgr source;
    std::jmp_buf escape;
};

Decoder& decoderOf(j_common_ptr jpeg) {
    return *static_cast<Decoder*>(jpeg->client_data);
}

[[noreturn]] void giveUp(j_common_ptr jpeg) {
    std::longjmp(decoderOf(jpeg).escape, 1);
}

// Cameras often end the data of a picture a few bytes early, which harms the last blocks at most. Where it
// ends sooner, the rest would be grey. Other warnings (stray bytes between markers) are normal.
void warned(j_common_ptr jpeg, int level) {
    if (level >= 0 || jpeg->err->msg_code != JWRN_HIT_MARKER || !jpeg->is_decompressor)
        return;
    const auto* d = reinterpret_cast<jpeg_decompress_struct*>(jpeg);
    if (d->input_iMCU_row + 1 < d->total_iMCU_rows)
        giveUp(jpeg);
}

void silent(j_common_ptr) {}

void startOfSource(j_decompress_ptr) {}
void endOfSource(j_decompress_ptr) {}

// All the bytes are there from the start: being asked for more means that the picture is cut off.
boolean noMoreSource(j_decompress_ptr jpeg) {
    giveUp(reinterpret_cast<j_common_ptr>(jpeg));
}

void skipSource(j_decompress_ptr jpeg, long count) {
    if (count <= 0)
        return;
    if (static_cast<size_t>(count) > jpeg->src->bytes_in_buffer)
        giveUp(reinterpret_cast<j_common_ptr>(jpeg));
    jpeg->src->next_input_byte += count;
    jpeg->src->bytes_in_buffer -= static_cast<size_t>(count);
}

void setUp(Decoder& d, const uint8_t* data, size_t bytes) {
    d.jpeg.err = jpeg_std_error(&d.errors);
    d.errors.error_exit = giveUp;
    d.errors.emit_message = warned;
    d.errors.output_message = silent;
    d.jpeg.client_data = &d;
    d.source.next_input_byte = data;
    d.source.bytes_in_buffer = bytes;
    d.source.init_source = startOfSource;
    d.source.fill_input_buffer = noMoreSource;
    d.source.skip_input_data = skipSource;
    d.source.resync_to_restart = jpeg_resync_to_restart;
    d.source.term_source = endOfSource;
}

int reduced(int side, unsigned part) {
    return (side + static_cast<int>(part) - 1) / static_cast<int>(part);
}

// Between here and the last libjpeg call no object with a destructor may live: longjmp passes over it.
bool decode(Decoder& d, int width, int height, uint8_t* bgra, int outWidth, int outHeight, int stride) {
    if (setjmp(d.escape))
        return false;
    jpeg_create_decompress(&d.jpeg);
    d.jpeg.src = &d.source;
    if (jpeg_read_header(&d.jpeg, TRUE) != JPEG_HEADER_OK)
        return false;
    if (d.jpeg.image_width != static_cast<JDIMENSION>(width) ||
        d.jpeg.image_height != static_cast<JDIMENSION>(height))
        return false;
    // Pictures in several passes would be held as a whole, and a short file can ask for any number of passes.
    if (d.jpeg.progressive_mode || d.jpeg.comps_in_scan != d.jpeg.num_components)
        return false;
    d.jpeg.out_color_space = JCS_EXT_BGRA;
    d.jpeg.do_fancy_upsampling = FALSE;
    d.jpeg.scale_num = 1;
    d.jpeg.scale_denom = 1;
    while (d.jpeg.scale_denom < 8 &&
           (reduced(width, d.jpeg.scale_denom) > outWidth || reduced(height, d.jpeg.scale_denom) > outHeight))
        d.jpeg.scale_denom *= 2;
    jpeg_start_decompress(&d.jpeg);
    if (d.jpeg.output_width != static_cast<JDIMENSION>(outWidth) ||
        d.jpeg.output_height != static_cast<JDIMENSION>(outHeight))
        return false;
    while (d.jpeg.output_scanline < d.jpeg.output_height) {
        JSAMPROW row = bgra + static_cast<ptrdiff_t>(d.jpeg.output_scanline) * stride;
        jpeg_read_scanlines(&d.jpeg, &row, 1);
    }
    return true; // jpeg_finish_decompress would only read on to the end marker
}

} // namespace

void reduceForJpeg(int& width, int& height, int wantedWidth, int wantedHeight) {
    const int wholeWidth = width, wholeHeight = height;
    for (unsigned part = 2; part <= 8; part *= 2) {
        const int w = reduced(wholeWidth, part);
        const int h = reduced(wholeHeight, part);
        if (w < wantedWidth || h < wantedHeight)
            break;
        width = w;
        height = h;
    }
}

bool decodeJpeg(const uint8_t* data, size_t bytes, int width, int height, uint8_t* bgra, int outWidth,
                int outHeight, int stride) {
    Decoder d = {};
    setUp(d, data, bytes);
    const bool whole = decode(d, width, height, bgra, outWidth, outHeight, stride);
    jpeg_destroy_decompress(&d.jpeg); // harmless when it was never created: all of it is zero
    return whole;
}

} // namespace pixels
} // namespace cameras
} // namespace ostrel
