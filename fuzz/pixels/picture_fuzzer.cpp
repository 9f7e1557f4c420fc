// Raw pictures of any layout, size, stride and order of fields, in one block or in planes of their own: with
// all of their bytes they are drawn, with one byte less they are not, and no byte beyond is read.
#include "fuzz/pixels/canvas.h"
#include "fuzz/support/check.h"
#include "fuzz/support/fenced_buffer.h"
#include "fuzz/support/input.h"

#include <memory>

using namespace ostrel::cameras;

namespace {

pixels::Picture anyPicture(fuzz::Input& input) {
    pixels::Picture picture;
    picture.layout = static_cast<pixels::Layout>(input.byte() % static_cast<int>(pixels::Layout::Jpeg));
    picture.matrix = static_cast<pixels::YuvMatrix>(input.byte() % 6);
    picture.fields = static_cast<pixels::Fields>(input.byte() % 3);
    picture.width = input.between(1, 200);
    picture.height = input.between(1, 200);
    return picture;
}

// Whatever the numbers are, even those of no picture.
void drawNonsense(fuzz::Input& input, pixels::Picture picture) {
    fuzz::FencedBuffer bytes(static_cast<size_t>(input.between(0, 5000)));
    for (pixels::Plane& plane : picture.planes)
        plane = {bytes.data(), bytes.size(), input.number()};
    if (input.byte() % 2 != 0)
        picture.width = input.number();
    if (input.byte() % 2 != 0)
        picture.height = input.number();
    const auto format = static_cast<pixels::OutputFormat>(input.byte() % 3);
    if (pixels::faultOf(picture) != pixels::Fault::None)
        CHECK(fuzz::draw(picture, format, 5, 5, 0) != pixels::Fault::None);
    else
        fuzz::draw(picture, format, 5, 5, 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    pixels::Picture picture = anyPicture(input);
    const bool blocks = input.byte() % 2 != 0;
    const int padding = input.byte() % 40;
    const auto format = static_cast<pixels::OutputFormat>(input.byte() % 3);
    const bool sameSize = input.byte() % 2 != 0;
    const int width = sameSize ? picture.width : input.between(1, 200);
    const int height = sameSize ? picture.height : input.between(1, 200);
    if (input.byte() % 8 == 7) {
        drawNonsense(input, picture);
        return 0;
    }

    std::unique_ptr<fuzz::FencedBuffer> memory[3];
    size_t last = 0; // the plane that ends the memory
    if (blocks) {
        for (int i = 0; i < pixels::planeCount(picture.layout); ++i) {
            const auto shape = pixels::planeShape(picture.layout, i, picture.width, picture.height);
            const size_t stride = shape.rowBytes + static_cast<size_t>(input.byte() % 40);
            const size_t bytes = stride * static_cast<size_t>(shape.rows - 1) + shape.rowBytes;
            last = static_cast<size_t>(i);
            memory[last] = std::make_unique<fuzz::FencedBuffer>(bytes);
            picture.planes[last] = {memory[last]->data(), bytes, static_cast<int>(stride)};
        }
    } else {
        const int stride = pixels::minimumStride(picture.layout, picture.width) + padding;
        const size_t bytes = pixels::neededBytes(picture.layout, picture.width, picture.height, stride);
        memory[0] = std::make_unique<fuzz::FencedBuffer>(bytes);
        pixels::setBlock(picture, memory[0]->data(), bytes, stride);
        last = static_cast<size_t>(pixels::planeCount(picture.layout) - 1);
    }
    for (auto& block : memory)
        if (block)
            input.fill(block->data(), block->size());

    CHECK(pixels::faultOf(picture) == pixels::Fault::None);
    CHECK(fuzz::draw(picture, format, width, height, padding) == pixels::Fault::None);
    --picture.planes[last].bytes;
    CHECK(fuzz::draw(picture, format, width, height, 0) != pixels::Fault::None);
    return 0;
}
