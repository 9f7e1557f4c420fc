#include "support/jpeg_pictures.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <jpeglib.h>

namespace ostrel::support {

const uint8_t JPEG_QUADRANTS[4][3] = {{40, 30, 200}, {60, 180, 20}, {210, 50, 30}, {190, 190, 190}};

namespace {

// Takes out the segments that define Huffman tables (FF C4).
std::vector<uint8_t> withoutTables(const std::vector<uint8_t>& jpeg) {
    std::vector<uint8_t> result(jpeg.begin(), jpeg.begin() + 2);
    size_t at = 2;
    while (jpeg[at + 1] != 0xDA) {
        const size_t length = 2 + static_cast<size_t>(jpeg[at + 2] << 8 | jpeg[at + 3]);
        if (jpeg[at + 1] != 0xC4)
            result.insert(result.end(), jpeg.begin() + static_cast<ptrdiff_t>(at),
                          jpeg.begin() + static_cast<ptrdiff_t>(at + length));
        at += length;
    }
    result.insert(result.end(), jpeg.begin() + static_cast<ptrdiff_t>(at), jpeg.end());
    return result;
}

} // namespace

std::vector<uint8_t> encodeJpeg(int width, int height, const JpegOptions& options,
                                const std::function<std::array<uint8_t, 3>(int x, int y)>& pixelAt) {
    jpeg_compress_struct jpeg = {};
    jpeg_error_mgr errors;
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    unsigned char* memory = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&jpeg, &memory, &size);
    jpeg.image_width = static_cast<JDIMENSION>(width);
    jpeg.image_height = static_cast<JDIMENSION>(height);
    jpeg.input_components = 3;
    jpeg.in_color_space = options.colours == JpegColours::Bgr ? JCS_EXT_BGR : JCS_YCbCr;
    jpeg_set_defaults(&jpeg);
    if (options.grey)
        jpeg_set_colorspace(&jpeg, JCS_GRAYSCALE);
    jpeg_set_quality(&jpeg, options.quality, TRUE);
    jpeg.comp_info[0].h_samp_factor = options.grey ? 1 : options.horizontal;
    jpeg.comp_info[0].v_samp_factor = options.grey ? 1 : options.vertical;
    jpeg.restart_in_rows = options.restart;
    if (options.progressive)
        jpeg_simple_progression(&jpeg);
    jpeg_start_compress(&jpeg, TRUE);
    std::vector<uint8_t> row(static_cast<size_t>(width) * 3);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto pixel = pixelAt(x, y);
            std::copy(pixel.begin(), pixel.end(), row.begin() + static_cast<ptrdiff_t>(x) * 3);
        }
        JSAMPROW rows = row.data();
        jpeg_write_scanlines(&jpeg, &rows, 1);
    }
    jpeg_finish_compress(&jpeg);
    std::vector<uint8_t> result(memory, memory + size);
    jpeg_destroy_compress(&jpeg);
    std::free(memory);
    return options.tables ? result : withoutTables(result);
}

std::vector<uint8_t> quadrantsAsJpeg(int width, int height, const JpegOptions& options) {
    return encodeJpeg(width, height, options, [&](int x, int y) {
        const uint8_t* const bgr = JPEG_QUADRANTS[(y >= height / 2 ? 2 : 0) + (x >= width / 2 ? 1 : 0)];
        return std::array<uint8_t, 3>{bgr[0], bgr[1], bgr[2]};
    });
}

} // namespace ostrel::support
