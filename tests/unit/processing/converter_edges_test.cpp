// The rules of strides, lengths and resizing.
#include "unit/processing/frames.h"

#include <ostrel/processing.h>

#include <gtest/gtest.h>
#include <libyuv.h>

#include <thread>

using namespace ostrel::tests;
using ostrel::OVideoConverter;

namespace {

const Size SMALL = {34, 18};

size_t bytesOf(int count) {
    return static_cast<size_t>(count);
}

} // namespace

TEST(I420ToYUY2Stride, OfZeroAndOfWidthBothMeanRowsWithoutPadding) {
    const Bytes src = noise(i420Bytes(SMALL), 1);
    Guarded zero(yuy2Bytes(SMALL));
    Guarded width(yuy2Bytes(SMALL));
    Guarded twice(yuy2Bytes(SMALL));
    EXPECT_EQ(OVideoConverter::I420ToYUY2(src.data(), zero.data(), 34, 18, 0), 0);
    EXPECT_EQ(OVideoConverter::I420ToYUY2(src.data(), width.data(), 34, 18, 34), 0);
    EXPECT_EQ(OVideoConverter::I420ToYUY2(src.data(), twice.data(), 34, 18, 68), 0);
    EXPECT_TRUE(zero.bytes() == width.bytes());
    EXPECT_TRUE(zero.bytes() == twice.bytes());
    EXPECT_TRUE(zero.guardsIntact() && width.guardsIntact() && twice.guardsIntact());
}

TEST(I420ToYUY2Stride, EightBytesWiderThanARowLeavesThemUntouchedInEachRow) {
    const Bytes src = noise(i420Bytes(SMALL), 1);
    Guarded tight(yuy2Bytes(SMALL));
    Guarded padded(76 * 18);
    EXPECT_EQ(OVideoConverter::I420ToYUY2(src.data(), tight.data(), 34, 18, 0), 0);
    EXPECT_EQ(OVideoConverter::I420ToYUY2(src.data(), padded.data(), 34, 18, 68 + 8), 0);
    for (int row = 0; row < 18; ++row) {
        const uint8_t* const pixels = padded.data() + row * 76;
        EXPECT_EQ(Bytes(pixels, pixels + 68), Bytes(tight.data() + row * 68, tight.data() + row * 68 + 68));
        EXPECT_EQ(Bytes(pixels + 68, pixels + 76), Bytes(8, Guarded::FILL)) << "row " << row;
    }
    EXPECT_TRUE(padded.guardsIntact());
}

TEST(I420ToYUY2Stride, SmallerThanARowGoesToLibyuvUnchanged) {
    const Bytes src = noise(i420Bytes(SMALL), 1);
    Guarded ours(60 * 17 + 68);
    Guarded plain(60 * 17 + 68);
    const uint8_t* const u = src.data() + 34 * 18;
    const uint8_t* const v = u + 34 * 18 / 4;
    EXPECT_EQ(OVideoConverter::I420ToYUY2(src.data(), ours.data(), 34, 18, 60), 0);
    EXPECT_EQ(libyuv::I420ToYUY2(src.data(), 34, u, 17, v, 17, plain.data(), 60, 34, 18), 0);
    EXPECT_TRUE(ours.bytes() == plain.bytes());
    EXPECT_TRUE(ours.guardsIntact());
}

TEST(I420ToYUY2Stride, BelowZeroWritesTheRowsUpwards) {
    const Bytes src = noise(i420Bytes(SMALL), 1);
    Guarded tight(yuy2Bytes(SMALL));
    Guarded upwards(yuy2Bytes(SMALL));
    EXPECT_EQ(OVideoConverter::I420ToYUY2(src.data(), tight.data(), 34, 18, 0), 0);
    EXPECT_EQ(OVideoConverter::I420ToYUY2(src.data(), upwards.data() + 17 * 68, 34, 18, -68), 0);
    for (int row = 0; row < 18; ++row) {
        const uint8_t* const there = upwards.data() + (17 - row) * 68;
        EXPECT_EQ(Bytes(there, there + 68), Bytes(tight.data() + row * 68, tight.data() + row * 68 + 68));
    }
    EXPECT_TRUE(upwards.guardsIntact());
}

TEST(YUY2ToI420Arguments, StartWithTheSize) {
    // A frame of 4 x 2 pixels whose bytes count up; as 2 x 4 its planes would differ.
    const Bytes src = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    const Bytes wanted = {0, 2, 4, 6, 8, 10, 12, 14, 5, 9, 7, 11};
    Guarded dst(12);
    EXPECT_EQ(OVideoConverter::YUY2ToI420(4, 2, src.data(), dst.data()), 0);
    EXPECT_EQ(dst.bytes(), wanted);

    Guarded swapped(12);
    EXPECT_EQ(OVideoConverter::YUY2ToI420(2, 4, src.data(), swapped.data()), 0);
    EXPECT_NE(swapped.bytes(), wanted);
    EXPECT_TRUE(dst.guardsIntact() && swapped.guardsIntact());
}

TEST(I420Planes, OfOddSizesAreNotRoundedUp) {
    // 5 x 3: 15 bytes of luma, chroma rows 2 bytes apart, V at 15 + 3.
    Bytes src(i420Bytes({5, 3}), 0);
    const uint8_t u = 50;
    const uint8_t v = 200;
    src[15] = u;
    src[18] = v;
    Bytes dst(yuy2Bytes({5, 3}));
    EXPECT_EQ(OVideoConverter::I420ToYUY2(src.data(), dst.data(), 5, 3, 0), 0);
    EXPECT_EQ(dst[1], u);
    EXPECT_EQ(dst[3], v);
}

TEST(RGB24ToARGB32Lengths, AreNeitherCheckedNorChanged) {
    Bytes src = noise(rgb24Bytes(SMALL) + 5, 2);
    Bytes dst(argbBytes(SMALL) + 7, Guarded::FILL);
    EXPECT_EQ(OVideoConverter::RGB24ToARGB32(src, dst, 34, 18), 0);
    ASSERT_EQ(dst.size(), argbBytes(SMALL) + 7);
    EXPECT_EQ(Bytes(dst.end() - 7, dst.end()), Bytes(7, Guarded::FILL));
    // The last row of the picture is the first of the source.
    const size_t lastRow = bytesOf(17 * 34 * 4);
    EXPECT_EQ(Bytes(dst.begin() + 17 * 34 * 4, dst.begin() + 17 * 34 * 4 + 3),
              Bytes(src.begin(), src.begin() + 3));
    EXPECT_EQ(dst[lastRow + 3], 255);
}

TEST(RGB24ToYUY2Lengths, OneByteShortIsRefusedAndTheDestinationUntouched) {
    const Bytes src(rgb24Bytes(SMALL) - 1);
    Bytes dst = {1, 2, 3};
    EXPECT_EQ(OVideoConverter::RGB24ToYUY2(src, dst, 34, 18), -1);
    EXPECT_EQ(dst, Bytes({1, 2, 3}));
}

TEST(RGB24ToYUY2Lengths, OneByteLongIsRefusedAndTheDestinationUntouched) {
    const Bytes src(rgb24Bytes(SMALL) + 1);
    Bytes dst = {1, 2, 3};
    EXPECT_EQ(OVideoConverter::RGB24ToYUY2(src, dst, 34, 18), -1);
    EXPECT_EQ(dst, Bytes({1, 2, 3}));
}

TEST(RGB24ToYUY2Lengths, ALongerDestinationIsCutAndAShorterOneGrows) {
    const Bytes src = noise(24, 3);
    Bytes longer(100, Guarded::FILL);
    Bytes shorter(3, Guarded::FILL);
    EXPECT_EQ(OVideoConverter::RGB24ToYUY2(src, longer, 4, 2), 0);
    EXPECT_EQ(OVideoConverter::RGB24ToYUY2(src, shorter, 4, 2), 0);
    EXPECT_EQ(longer.size(), 16u);
    EXPECT_EQ(shorter, longer);
}

TEST(RGB24ToYUY2Lengths, DestinationHasItsSizeEvenWhenBothStepsAreRefused) {
    // -4 x -2 has the byte count of 4 x 2, but libyuv takes no negative width.
    Bytes dst(3, Guarded::FILL);
    EXPECT_EQ(OVideoConverter::RGB24ToYUY2(noise(24, 3), dst, -4, -2), -1);
    Bytes wanted(16, 0);
    std::fill_n(wanted.begin(), 3, Guarded::FILL);
    EXPECT_EQ(dst, wanted);
}

TEST(RGB24ToYUY2Lengths, ANegativeHeightMatchesNoSource) {
    Bytes dst = {1, 2, 3};
    EXPECT_EQ(OVideoConverter::RGB24ToYUY2(noise(24, 3), dst, 4, -2), -1);
    EXPECT_EQ(dst, Bytes({1, 2, 3}));
}

TEST(ConvertToYUY2, TakesA24ByteSourceOf4x2AsRgb24AndResizesTheDestination) {
    const Bytes src = noise(24, 4);
    Bytes dst(3);
    Bytes direct;
    EXPECT_EQ(OVideoConverter::convertToYUY2(src, dst, 4, 2), 0);
    EXPECT_EQ(OVideoConverter::RGB24ToYUY2(src, direct, 4, 2), 0);
    EXPECT_EQ(dst.size(), 16u);
    EXPECT_EQ(dst, direct);
}

TEST(ConvertToYUY2, TakesA12ByteSourceOf4x2AsI420AndKeepsTheSizeOfTheDestination) {
    const Bytes src = {1, 2, 3, 4, 5, 6, 7, 8, 100, 101, 200, 201};
    Bytes dst(20, Guarded::FILL);
    EXPECT_EQ(OVideoConverter::convertToYUY2(src, dst, 4, 2), 0);
    Bytes wanted = {1, 100, 2, 200, 3, 101, 4, 201, 5, 100, 6, 200, 7, 101, 8, 201};
    wanted.resize(20, Guarded::FILL);
    EXPECT_EQ(dst, wanted);
}

TEST(ConvertToYUY2, RefusesAnyOtherLengthAndLeavesTheDestinationUntouched) {
    for (size_t length : {0u, 1u, 11u, 13u, 16u, 23u, 25u, 32u}) {
        Bytes dst = {1, 2, 3};
        EXPECT_EQ(OVideoConverter::convertToYUY2(Bytes(length), dst, 4, 2), -1) << length;
        EXPECT_EQ(dst, Bytes({1, 2, 3})) << length;
    }
}

TEST(ConvertToYUY2, OfAnEmptySourceWithoutWidthOrHeightIsRefusedByLibyuv) {
    const int sizes[][2] = {{0, 0}, {0, 2}, {4, 0}, {-4, 0}, {0, -2}};
    for (const int(&size)[2] : sizes) {
        Bytes withStorage(64);
        withStorage.clear();
        Bytes dst = {1, 2, 3};
        EXPECT_EQ(OVideoConverter::convertToYUY2(Bytes(), dst, size[0], size[1]), -1);
        EXPECT_EQ(OVideoConverter::convertToYUY2(withStorage, dst, size[0], size[1]), -1);
        EXPECT_EQ(dst, Bytes({1, 2, 3}));
    }
}

// Byte counts wrap at 32 bits. Lengths that match only a wrapped count must not send libyuv through frames of
// gigabytes.
TEST(WrappedSizes, WithACountOfZeroAreRefusedForAnEmptySource) {
    // 65536 x 65536 is 2^32 pixels; the vectors are empty, but not without storage.
    Bytes src(64);
    src.clear();
    Bytes dst(64, Guarded::FILL);
    EXPECT_EQ(OVideoConverter::convertToYUY2(src, dst, 65536, 65536), -1);
    EXPECT_EQ(dst, Bytes(64, Guarded::FILL));
    EXPECT_EQ(OVideoConverter::RGB24ToYUY2(src, dst, 65536, 65536), -1);
    EXPECT_TRUE(dst.empty());
}

TEST(WrappedSizes, WhoseYuy2CountIsNegativeAreRefusedWithTheDestinationUntouched) {
    // 3 * 715827883 * 2 is 2^32 + 2, twice 715827883 * 2 is above 2^31.
    Bytes dst = {1, 2, 3};
    EXPECT_EQ(OVideoConverter::RGB24ToYUY2(Bytes(2), dst, 715827883, 2), -1);
    EXPECT_EQ(OVideoConverter::convertToYUY2(Bytes(2), dst, 715827883, 2), -1);
    EXPECT_EQ(OVideoConverter::convertToYUY2(Bytes(1), dst, 715827883, 2), -1);
    EXPECT_EQ(dst, Bytes({1, 2, 3}));
}

TEST(WrappedSizes, WhoseHalfCountIsCutToZeroAreRefused) {
    // 3 * 1431655765 is 2^32 - 1, so that the count is -1 and half of it 0.
    Bytes src(64);
    src.clear();
    Bytes dst = {1, 2, 3};
    EXPECT_EQ(OVideoConverter::convertToYUY2(src, dst, 1, 1431655765), -1);
    EXPECT_EQ(dst, Bytes({1, 2, 3}));
}

TEST(ScaleLDToSD, ReturnsAnEmptyBufferForAnyInput) {
    EXPECT_TRUE(OVideoConverter::ScaleLDToSD(Bytes()).empty());
    EXPECT_TRUE(OVideoConverter::ScaleLDToSD(noise(320 * 240 * 3 / 2, 5)).empty());
    EXPECT_TRUE(OVideoConverter::ScaleLDToSD(noise(7, 5)).empty());
}

TEST(ConverterThreads, ConvertFramesOfTheirOwnAtTheSameTime) {
    const Bytes src = noise(rgb24Bytes({320, 240}), 6);
    Bytes wanted;
    ASSERT_EQ(OVideoConverter::RGB24ToYUY2(src, wanted, 320, 240), 0);
    std::vector<Bytes> results(4);
    std::vector<std::thread> threads;
    for (Bytes& result : results)
        threads.emplace_back([&src, &result] {
            for (int round = 0; round < 20; ++round)
                OVideoConverter::convertToYUY2(src, result, 320, 240);
        });
    for (std::thread& thread : threads)
        thread.join();
    for (const Bytes& result : results)
        EXPECT_TRUE(result == wanted);
}
