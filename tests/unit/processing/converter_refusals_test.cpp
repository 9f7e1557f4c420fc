// What the conversions refuse: a null pointer, a width below 1, a height of 0. Nothing is written then.
#include "unit/processing/frames.h"

#include <ostrel/processing.h>

#include <gtest/gtest.h>

#include <limits.h>

using namespace ostrel::tests;
using ostrel::OVideoConverter;

namespace {

struct Operation {
    const char* name;
    int (*convert)(const uint8_t* src, uint8_t* dst, int width, int height);
};

std::ostream& operator<<(std::ostream& out, const Operation& operation) {
    return out << operation.name;
}

int i420ToYuy2(const uint8_t* src, uint8_t* dst, int width, int height) {
    return OVideoConverter::I420ToYUY2(src, dst, width, height, 0);
}

int i420ToPaddedYuy2(const uint8_t* src, uint8_t* dst, int width, int height) {
    return OVideoConverter::I420ToYUY2(src, dst, width, height, 400);
}

int yuy2ToI420(const uint8_t* src, uint8_t* dst, int width, int height) {
    return OVideoConverter::YUY2ToI420(width, height, src, dst);
}

const Operation OPERATIONS[] = {
    {"RGB24ToI420", OVideoConverter::RGB24ToI420},
    {"ARGBToI420", OVideoConverter::ARGBToI420},
    {"I420ToARGB32", OVideoConverter::I420ToARGB32},
    {"YUY2ToARGB", OVideoConverter::YUY2ToARGB},
    {"I420ToYUY2", i420ToYuy2},
    {"I420ToYUY2WithStride", i420ToPaddedYuy2},
    {"YUY2ToI420", yuy2ToI420},
};

class Refusals : public testing::TestWithParam<Operation> {
protected:
    void expectRefused(int width, int height) {
        EXPECT_EQ(GetParam().convert(src_.data(), dst_.data(), width, height), -1) << Size{width, height};
        EXPECT_TRUE(dst_.untouched()) << Size{width, height};
    }

    const Bytes src_ = noise(4096, 1);
    Guarded dst_{4096};
};

} // namespace

TEST_P(Refusals, OfANullSource) {
    EXPECT_EQ(GetParam().convert(nullptr, dst_.data(), 16, 16), -1);
    EXPECT_TRUE(dst_.untouched());
}

TEST_P(Refusals, OfANullDestination) {
    EXPECT_EQ(GetParam().convert(src_.data(), nullptr, 16, 16), -1);
}

TEST_P(Refusals, OfNullPointersWithSizesThatWrap) {
    EXPECT_EQ(GetParam().convert(nullptr, nullptr, INT_MAX, INT_MAX), -1);
    EXPECT_EQ(GetParam().convert(nullptr, nullptr, 65536, INT_MIN), -1);
}

TEST_P(Refusals, OfAWidthBelow1) {
    for (int width : {0, -1, -2, -16, INT_MIN, INT_MIN + 1})
        for (int height : {1, 2, 16, -16, INT_MAX, INT_MIN})
            expectRefused(width, height);
}

TEST_P(Refusals, OfAHeightOf0) {
    for (int width : {1, 2, 16, INT_MAX})
        expectRefused(width, 0);
}

INSTANTIATE_TEST_SUITE_P(, Refusals, testing::ValuesIn(OPERATIONS),
                         [](const testing::TestParamInfo<Operation>& test) { return test.param.name; });

TEST(RGB24ToARGB32Refusals, AreAnsweredWith0AndLeaveTheDestinationAsItWas) {
    const Bytes src = noise(16 * 16 * 3, 2);
    const int refused[][2] = {{0, 16}, {-16, 16}, {-16, -16}, {16, 0}, {INT_MIN, INT_MIN}, {INT_MIN, 1}};
    for (const int(&size)[2] : refused) {
        Bytes dst(16 * 16 * 4, Guarded::FILL);
        EXPECT_EQ(OVideoConverter::RGB24ToARGB32(src, dst, size[0], size[1]), 0) << size[0];
        EXPECT_EQ(dst, Bytes(16 * 16 * 4, Guarded::FILL)) << size[0];
    }
}

TEST(RGB24ToARGB32Refusals, OfEmptyVectorsAreAnsweredWith0) {
    Bytes dst(16 * 16 * 4, Guarded::FILL);
    EXPECT_EQ(OVideoConverter::RGB24ToARGB32(Bytes(), dst, 16, 16), 0);
    EXPECT_EQ(dst, Bytes(16 * 16 * 4, Guarded::FILL));

    Bytes empty;
    EXPECT_EQ(OVideoConverter::RGB24ToARGB32(noise(16 * 16 * 3, 2), empty, 16, 16), 0);
    EXPECT_TRUE(empty.empty());
}
