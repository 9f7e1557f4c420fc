// Bytes that claim to be a camera's JPEG picture: whatever they are, checking, drawing and completing them
// stays within them and within the picture that is drawn, and what is drawn is opaque.
#include "fuzz/pixels/canvas.h"
#include "fuzz/support/check.h"
#include "fuzz/support/fenced_buffer.h"
#include "fuzz/support/input.h"

#include "platform/cameras/pixels/jpeg.h"
#include "platform/cameras/pixels/jpeg_tables.h"

#include <algorithm>
#include <cstring>

using namespace ostrel::cameras;

namespace {

// Larger ones only take longer.
const int LARGEST_FUZZED_SIDE = 400;

// What can be shown can be completed, and is the same picture then.
void complete(fuzz::FencedBuffer& bytes, const pixels::JpegSize& size) {
    const auto whole = pixels::completeJpeg(bytes.data(), bytes.size());
    CHECK(whole.size() >= 4 && whole[0] == 0xFF && whole[1] == 0xD8);
    CHECK(whole[whole.size() - 2] == 0xFF && whole[whole.size() - 1] == 0xD9);
    pixels::JpegSize again;
    CHECK(pixels::sizeOfJpeg(whole.data(), whole.size(), again) == pixels::Fault::None);
    CHECK(again.width == size.width && again.height == size.height);
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
    const auto format = static_cast<pixels::OutputFormat>(input.byte() % 3);

    fuzz::FencedBuffer bytes(size - head);
    std::copy(data + head, data + size, bytes.data());
    pixels::Picture picture;
    picture.layout = pixels::Layout::Jpeg;
    picture.planes[0] = {bytes.data(), bytes.size(), 0};
    pixels::JpegSize real;
    const pixels::Fault header = pixels::sizeOfJpeg(bytes.data(), bytes.size(), real);
    CHECK(header == pixels::Fault::None || std::strlen(pixels::reason(header)) > 0);
    if (header == pixels::Fault::None &&
        (real.width > LARGEST_FUZZED_SIDE || real.height > LARGEST_FUZZED_SIDE))
        return 0;

    const pixels::Fault fault = pixels::faultOf(picture);
    CHECK(header == pixels::Fault::None || fault == header);
    // Broken pictures, too: the check is a sieve for frames, not what the decoder's safety rests on.
    fuzz::draw(picture, format, width, height, padding);
    if (header != pixels::Fault::None)
        return 0;
    fuzz::draw(picture, format, real.width, real.height, 0);
    complete(bytes, real);
    return 0;
}
