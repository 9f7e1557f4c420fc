// Both scaling operations over levels, lengths and filters, known and unknown ones, against what the rules of
// lengths and levels say.
#include "fuzz/support/check.h"
#include "fuzz/support/input.h"

#include <ostrel/processing.h>

#include <vector>

using fuzz::Input;
using namespace ostrel;

namespace {

typedef std::vector<uint8_t> Bytes;

// The pixels of a level; 0 for a number that is none.
int pixelsOf(int quality) {
    const int pixels[] = {320 * 240, 640 * 480, 1280 * 720};
    return quality >= 0 && quality < 3 ? pixels[quality] : 0;
}

// Mostly levels, at times any number.
int level(Input& input) {
    const int choice = input.byte() % 8;
    return choice < 6 ? choice / 2 : input.number();
}

// Mostly the right length, at times another.
size_t lengthNear(Input& input, int right) {
    const int choice = input.byte() % 8;
    if (choice == 0)
        return static_cast<size_t>(input.between(0, 65535));
    if (choice == 1)
        return static_cast<size_t>(right + 1);
    if (choice == 2 && right > 0)
        return static_cast<size_t>(right - 1);
    return static_cast<size_t>(right);
}

ScaleMethod method(Input& input, bool enlarges) {
    const int choice = input.byte() % 8;
    // libyuv reads beyond the source when it enlarges by a filter that it does not know.
    if (choice < 6 || enlarges)
        return static_cast<ScaleMethod>(choice % 3);
    return static_cast<ScaleMethod>(input.number());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    const bool yuy2 = input.byte() % 2 != 0;
    const int from = level(input);
    const int to = level(input);
    const bool known = pixelsOf(from) > 0 && pixelsOf(to) > 0;
    const ScaleMethod filter = method(input, pixelsOf(to) > pixelsOf(from));
    const int right = yuy2 ? pixelsOf(from) * 2 : pixelsOf(from) * 3 / 2;
    const size_t scaled = static_cast<size_t>(yuy2 ? pixelsOf(to) * 2 : pixelsOf(to) * 3 / 2);

    Bytes src(lengthNear(input, right));
    Bytes dst(static_cast<size_t>(input.between(0, 2000)), 7);
    input.fill(src.data(), src.size());
    const Bytes srcBefore = src;
    const Bytes dstBefore = dst;

    const VIDEO_QUALITY srcLevel = static_cast<VIDEO_QUALITY>(from);
    const VIDEO_QUALITY dstLevel = static_cast<VIDEO_QUALITY>(to);
    const int answer = yuy2 ? OVideoScaler::scaleYUY2Frame(srcLevel, src, dstLevel, dst, filter)
                            : OVideoScaler::scaleI420Frame(srcLevel, src, dstLevel, dst, filter);

    CHECK(src == srcBefore);
    if (src.size() != static_cast<size_t>(right)) {
        CHECK(answer == -1);
        CHECK(dst == dstBefore);
        return 0;
    }
    CHECK(dst.size() == scaled);
    CHECK(answer == (known || yuy2 ? 0 : -1));
    if (from == to && !yuy2 && known)
        CHECK(dst == src);
    if (yuy2 && !known)
        CHECK(dst == Bytes(scaled, 0));
    return 0;
}
