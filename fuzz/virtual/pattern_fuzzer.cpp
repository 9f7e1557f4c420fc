// Pictures that may show the test pattern: reading stays within them, and what cannot be read leaves the
// answers alone.
#include "fuzz/support/check.h"
#include "fuzz/support/input.h"

#include "platform/cameras/virtual/pattern_code.h"

#include <vector>

using namespace ostrel::cameras;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    const int width = input.between(0, 200);
    const int height = input.between(0, 150);
    const int stride = width * 4 + input.between(0, 9);
    // Without padding behind the last row, so that a step too far is seen.
    std::vector<uint8_t> picture;
    if (width > 0 && height > 0)
        picture.resize(static_cast<size_t>(stride) * static_cast<size_t>(height - 1) +
                       static_cast<size_t>(width) * 4);
    input.fill(picture.data(), picture.size());
    pattern::Stamp stamp = {77, 88};
    if (!pattern::readCode(picture.data(), width, height, stride, stamp))
        CHECK(stamp.counter == 77 && stamp.clock == 88);
    return 0;
}
