// Every conversion gives the bytes and the answer of the libyuv call that stands for it, and nothing beyond
// its destination changes.
#include "unit/processing/frames.h"

#include <ostrel/processing.h>

#include <gtest/gtest.h>
#include <libyuv.h>

#include <tuple>

using namespace ostrel::tests;
using ostrel::OVideoConverter;

namespace {

struct Operation {
    const char* name;
    size_t (*srcBytes)(Size);
    size_t (*dstBytes)(Size);
    int (*ours)(const uint8_t* src, uint8_t* dst, int w, int h);
    int (*plain)(const uint8_t* src, uint8_t* dst, int w, int h);
};

std::ostream& operator<<(std::ostream& out, const Operation& operation) {
    return out << operation.name;
}

int oursI420ToYUY2(const uint8_t* src, uint8_t* dst, int w, int h) {
    return OVideoConverter::I420ToYUY2(src, dst, w, h, 0);
}

int oursYUY2ToI420(const uint8_t* src, uint8_t* dst, int w, int h) {
    return OVideoConverter::YUY2ToI420(w, h, src, dst);
}

int oursRGB24ToARGB32(const uint8_t* src, uint8_t* dst, int w, int h) {
    Bytes frame(argbBytes({w, h}));
    const int answer = OVideoConverter::RGB24ToARGB32(Bytes(src, src + rgb24Bytes({w, h})), frame, w, h);
    std::copy(frame.begin(), frame.end(), dst);
    return answer;
}

int plainRGB24ToI420(const uint8_t* src, uint8_t* dst, int w, int h) {
    return libyuv::RGB24ToI420(src, w * 3, dst, w, dst + w * h, w / 2, dst + w * h + w * h / 4, w / 2, w, -h);
}

int plainARGBToI420(const uint8_t* src, uint8_t* dst, int w, int h) {
    return libyuv::ARGBToI420(src, w * 4, dst, w, dst + w * h, w / 2, dst + w * h + w * h / 4, w / 2, w, h);
}

int plainI420ToARGB(const uint8_t* src, uint8_t* dst, int w, int h) {
    return libyuv::I420ToARGB(src, w, src + w * h, w / 2, src + w * h + w * h / 4, w / 2, dst, w * 4, w, h);
}

int plainYUY2ToARGB(const uint8_t* src, uint8_t* dst, int w, int h) {
    return libyuv::YUY2ToARGB(src, w * 2, dst, w * 4, w, h);
}

int plainI420ToYUY2(const uint8_t* src, uint8_t* dst, int w, int h) {
    return libyuv::I420ToYUY2(src, w, src + w * h, w / 2, src + w * h + w * h / 4, w / 2, dst, w * 2, w, h);
}

int plainYUY2ToI420(const uint8_t* src, uint8_t* dst, int w, int h) {
    return libyuv::YUY2ToI420(src, w * 2, dst, w, dst + w * h, w / 2, dst + w * h + w * h / 4, w / 2, w, h);
}

int plainRGB24ToARGB(const uint8_t* src, uint8_t* dst, int w, int h) {
    return libyuv::RGB24ToARGB(src, w * 3, dst, w * 4, w, -h);
}

const Operation OPERATIONS[] = {
    {"RGB24ToI420", rgb24Bytes, i420Bytes, OVideoConverter::RGB24ToI420, plainRGB24ToI420},
    {"ARGBToI420", argbBytes, i420Bytes, OVideoConverter::ARGBToI420, plainARGBToI420},
    {"I420ToARGB32", i420Bytes, argbBytes, OVideoConverter::I420ToARGB32, plainI420ToARGB},
    {"YUY2ToARGB", yuy2Bytes, argbBytes, OVideoConverter::YUY2ToARGB, plainYUY2ToARGB},
    {"I420ToYUY2", i420Bytes, yuy2Bytes, oursI420ToYUY2, plainI420ToYUY2},
    {"YUY2ToI420", yuy2Bytes, i420Bytes, oursYUY2ToI420, plainYUY2ToI420},
    {"RGB24ToARGB32", rgb24Bytes, argbBytes, oursRGB24ToARGB32, plainRGB24ToARGB},
};

class ConverterBytes : public testing::TestWithParam<std::tuple<Operation, Size>> {};

class RGB24ToYUY2Bytes : public testing::TestWithParam<Size> {
protected:
    // The two steps with libyuv alone, in buffers with room to spare.
    Bytes reference(const Bytes& src) const {
        const int w = GetParam().width;
        const int h = GetParam().height;
        Bytes i420(i420Bytes(GetParam()) + 64);
        uint8_t* y = i420.data();
        uint8_t* u = y + w * h;
        uint8_t* v = u + w * h / 4;
        EXPECT_EQ(libyuv::RGB24ToI420(src.data(), w * 3, y, w, u, w / 2, v, w / 2, w, h), 0);
        Bytes yuy2(yuy2Bytes(GetParam()) + 64);
        EXPECT_EQ(libyuv::I420ToYUY2(y, w, u, w / 2, v, w / 2, yuy2.data(), w * 2, w, h), 0);
        yuy2.resize(static_cast<size_t>(w * h * 2));
        return yuy2;
    }
};

std::string sizeName(Size size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

} // namespace

TEST_P(ConverterBytes, EqualThoseOfTheLibyuvCall) {
    const Operation operation = std::get<0>(GetParam());
    const Size size = std::get<1>(GetParam());
    const Bytes src = noise(operation.srcBytes(size), 1);

    Guarded ours(operation.dstBytes(size));
    Guarded plain(operation.dstBytes(size));
    EXPECT_EQ(operation.ours(src.data(), ours.data(), size.width, size.height), 0);
    EXPECT_EQ(operation.plain(src.data(), plain.data(), size.width, size.height), 0);

    EXPECT_TRUE(ours.bytes() == plain.bytes());
    EXPECT_FALSE(ours.untouched());
    EXPECT_TRUE(ours.guardsIntact());
    EXPECT_TRUE(src == noise(src.size(), 1)) << "the source changed";
}

INSTANTIATE_TEST_SUITE_P(, ConverterBytes,
                         testing::Combine(testing::ValuesIn(OPERATIONS), testing::ValuesIn(allSizes())),
                         [](const testing::TestParamInfo<std::tuple<Operation, Size>>& test) {
                             return std::get<0>(test.param).name + ("_" + sizeName(std::get<1>(test.param)));
                         });

TEST_P(RGB24ToYUY2Bytes, EqualThoseOfBothLibyuvCalls) {
    const Bytes src = noise(rgb24Bytes(GetParam()), 2);
    Bytes dst;
    EXPECT_EQ(OVideoConverter::RGB24ToYUY2(src, dst, GetParam().width, GetParam().height), 0);
    EXPECT_TRUE(dst == reference(src));
}

TEST_P(RGB24ToYUY2Bytes, ReachNothingBeyondTheFrameInALargerVector) {
    const Bytes src = noise(rgb24Bytes(GetParam()), 2);
    const Bytes expected = reference(src);
    Bytes dst(expected.size() + 64, Guarded::FILL);
    const uint8_t* const storage = dst.data();
    EXPECT_EQ(OVideoConverter::RGB24ToYUY2(src, dst, GetParam().width, GetParam().height), 0);
    EXPECT_TRUE(dst == expected);
    ASSERT_EQ(dst.data(), storage) << "moved, though it was large enough";
    // What was cut off is still the vector's memory.
    EXPECT_EQ(Bytes(storage + expected.size(), storage + expected.size() + 64), Bytes(64, Guarded::FILL));
}

TEST_P(RGB24ToYUY2Bytes, AreTheSameThroughConvertToYUY2) {
    const Bytes src = noise(rgb24Bytes(GetParam()), 2);
    Bytes dst;
    EXPECT_EQ(OVideoConverter::convertToYUY2(src, dst, GetParam().width, GetParam().height), 0);
    EXPECT_TRUE(dst == reference(src));
}

INSTANTIATE_TEST_SUITE_P(, RGB24ToYUY2Bytes, testing::ValuesIn(allSizes()),
                         [](const testing::TestParamInfo<Size>& test) { return sizeName(test.param); });

TEST(ConvertToYUY2Bytes, OfI420EqualThoseOfTheLibyuvCall) {
    for (Size size : evenSizes()) {
        const Bytes src = noise(i420Bytes(size), 3);
        Bytes dst(yuy2Bytes(size) + 16, Guarded::FILL);
        EXPECT_EQ(OVideoConverter::convertToYUY2(src, dst, size.width, size.height), 0) << size;

        Bytes expected(dst.size(), Guarded::FILL);
        plainI420ToYUY2(src.data(), expected.data(), size.width, size.height);
        EXPECT_TRUE(dst == expected) << size;
    }
}

TEST(ConvertToYUY2Bytes, OfI420WithOddSidesEqualThoseOfTheLibyuvCallWithinBothFrames) {
    for (Size size : {Size{1, 1}, Size{1, 2}, Size{2, 1}, Size{3, 2}, Size{5, 4}, Size{4, 3}, Size{5, 3},
                      Size{641, 480}, Size{640, 481}, Size{641, 481}}) {
        const size_t frame = static_cast<size_t>(size.width * size.height * 2);
        Bytes src = noise(static_cast<size_t>(size.width * 3 * size.height / 2), 3);
        Bytes dst(frame + 8, Guarded::FILL);
        EXPECT_EQ(OVideoConverter::convertToYUY2(src, dst, size.width, size.height), 0) << size;

        // libyuv reads chroma behind the source, which counts as no colour, and writes behind the frame.
        src.resize(i420Bytes(size) + 8, 128);
        Bytes expected(frame + 8, Guarded::FILL);
        plainI420ToYUY2(src.data(), expected.data(), size.width, size.height);
        std::fill(expected.begin() + static_cast<ptrdiff_t>(frame), expected.end(), Guarded::FILL);
        EXPECT_TRUE(dst == expected) << size;
    }
}
