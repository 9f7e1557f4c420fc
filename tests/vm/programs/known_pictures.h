// The pictures that the machine's cameras show, and whether a captured frame is one.
#ifndef OSTREL_TESTS_VM_KNOWN_PICTURES_H
#define OSTREL_TESTS_VM_KNOWN_PICTURES_H

#include <ostrel/capture.h>

#include <gtest/gtest.h>

namespace ostrel::vm {

// What 8-bit luma and chroma of limited range round off, and what a JPEG encoder takes away. The nearest
// mistakes (the other matrix, the other range) are off by 12 and more in some of the colours.
const int TOLERANCE = 6;

// vivid's 75 % colour bars, left to right: grey, yellow, cyan, green, magenta, red, blue, black, over the
// whole height. Every channel is 0 or 191.
testing::AssertionResult showsColorBars(const VideoFrame& frame, int tolerance = TOLERANCE);

// The picture of moving_pictures in guest/cameras.sh: the left quarter light grey, the rest red, green and
// blue from top to bottom. Where the white mark is at that moment does not matter.
testing::AssertionResult showsStripes(const VideoFrame& frame);

} // namespace ostrel::vm

#endif
