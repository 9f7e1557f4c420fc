// Bytes that claim to be a camera's JPEG picture: whatever they are, checking and drawing them stays within
// them and within the picture that is drawn, and what is drawn is opaque.
#include "fuzz/support/check.h"
#include "fuzz/support/fenced_buffer.h"
#include "fuzz/support/input.h"

#include "platform/cameras/pixels/bgra.h"
#include "platform/cameras/pixels/jpeg_check.h"

#include <algorithm>
#include <cstring>

using namespace ostrel::cameras;

namespace {

// Larger ones only take longer.
const int kLargestSide = 400;

struct Size {
    int width, height;
};

// What the first frame header says, so that most inputs are of the size that the camera has promised.
Size claimedSize(const uint8_t* data, size_t bytes) {
    for (size_t at = 0; at + 9 <= bytes; ++at)
        if (data[at] == 0xFF && (data[at + 1] == 0xC0 || data[at + 1] == 0xC1))
            return {data[at + 7] << 8 | data[at + 8], data[at + 5] << 8 | data[at + 6]};
    return {16, 16};
}

void draw(const pixels::Picture& picture, int width, int height, int padding) {
    const int stride = width * 4 + padding;
    fuzz::FencedBuffer target(static_cast<size_t>(stride) * static_cast<size_t>(height));
    std::memset(target.data(), 0x5A, target.size());
    pixels::PixelPool pool;
    const bool drawn = pixels::toBgra(picture, target.data(), width, height, stride, pool);
    CHECK(target.startIntact());
    for (int y = 0; y < height; ++y) {
        const size_t row = static_cast<size_t>(y) * static_cast<size_t>(stride);
        for (int x = 0; drawn && x < width; ++x)
            CHECK(target[row + static_cast<size_t>(x) * 4 + 3] == 255);
        for (int x = width * 4; x < stride; ++x)
            CHECK(target[row + static_cast<size_t>(x)] == 0x5A);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const size_t head = 4;
    if (size < head)
        return 0;
    fuzz::Input input(data, head);
    const int width = input.byte() + 1;
    const int height = input.byte() + 1;
    const int padding = input.byte();
    const bool promiseKept = input.byte() % 8 != 7;

    fuzz::FencedBuffer bytes(size - head);
    std::copy(data + head, data + size, bytes.data());
    Size promised = claimedSize(bytes.data(), bytes.size());
    if (!promiseKept)
        std::swap(promised.width, promised.height);
    if (promised.width > kLargestSide || promised.height > kLargestSide)
        return 0;

    const char* fault = pixels::faultOfJpeg(bytes.data(), bytes.size(), promised.width, promised.height);
    CHECK(!fault || std::strlen(fault) > 0);
    pixels::Picture picture;
    picture.layout = pixels::Layout::Jpeg;
    picture.width = promised.width;
    picture.height = promised.height;
    picture.data = bytes.data();
    picture.bytes = bytes.size();
    // Broken pictures, too: the check is a sieve for frames, not what the decoder's safety rests on.
    draw(picture, width, height, padding);
    if (promised.width > 0 && promised.height > 0)
        draw(picture, promised.width, promised.height, 0);
    return 0;
}
