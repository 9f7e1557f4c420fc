// Lengths, resizing, unknown levels and filters.
#include "unit/processing/frames.h"

#include <ostrel/processing.h>

#include <gtest/gtest.h>
#include <libyuv.h>

#include <limits.h>
#include <sys/resource.h>

using namespace ostrel::tests;
using namespace ostrel;

namespace {

const Size LEVELS[] = {{320, 240}, {640, 480}, {1280, 720}};
const ScaleMethod METHODS[] = {SCALE_METHOD_NONE, SCALE_METHOD_BILINEAR, SCALE_METHOD_BOX};
const int FILTERS[] = {libyuv::kFilterNone, libyuv::kFilterBilinear, libyuv::kFilterBox};
const int NO_LEVELS[] = {3, -1, INT_MAX, INT_MIN};

VIDEO_QUALITY level(int number) {
    return static_cast<VIDEO_QUALITY>(number);
}

// I420Scale on planes in buffers of their own, so that a wrong offset of ours cannot be repeated here.
Bytes plainScale(const Bytes& src, Size from, Size to, int filter) {
    const ptrdiff_t luma = from.width * from.height;
    const Bytes y(src.begin(), src.begin() + luma);
    const Bytes u(src.begin() + luma, src.begin() + luma + luma / 4);
    const Bytes v(src.begin() + luma + luma / 4, src.end());
    Bytes scaledY(static_cast<size_t>(to.width * to.height));
    Bytes scaledU(scaledY.size() / 4);
    Bytes scaledV(scaledY.size() / 4);
    EXPECT_EQ(libyuv::I420Scale(y.data(), from.width, u.data(), from.width / 2, v.data(), from.width / 2,
                                from.width, from.height, scaledY.data(), to.width, scaledU.data(),
                                to.width / 2, scaledV.data(), to.width / 2, to.width, to.height,
                                static_cast<libyuv::FilterMode>(filter)),
              0);
    scaledY.insert(scaledY.end(), scaledU.begin(), scaledU.end());
    scaledY.insert(scaledY.end(), scaledV.begin(), scaledV.end());
    return scaledY;
}

Bytes plainYuy2Scale(const Bytes& src, Size from, Size to, int filter) {
    const int w = from.width;
    const int h = from.height;
    Bytes unpacked(i420Bytes(from));
    uint8_t* const planes = unpacked.data();
    libyuv::YUY2ToI420(src.data(), w * 2, planes, w, planes + w * h, w / 2, planes + w * h + w * h / 4, w / 2,
                       w, h);
    const Bytes scaled = plainScale(unpacked, from, to, filter);
    const uint8_t* const y = scaled.data();
    const uint8_t* const u = y + to.width * to.height;
    const uint8_t* const v = u + to.width * to.height / 4;
    Bytes packed(yuy2Bytes(to));
    libyuv::I420ToYUY2(y, to.width, u, to.width / 2, v, to.width / 2, packed.data(), to.width * 2, to.width,
                       to.height);
    return packed;
}

} // namespace

TEST(ScaleMethods, HaveTheNumbersThatClientsStore) {
    EXPECT_EQ(SCALE_METHOD_NONE, 0);
    EXPECT_EQ(SCALE_METHOD_BILINEAR, 1);
    EXPECT_EQ(SCALE_METHOD_BOX, 2);
    EXPECT_EQ(sizeof(ScaleMethod), 4u);
}

TEST(ScaleI420Frame, GivesTheBytesOfLibyuvsFilterOfTheSameMeaning) {
    for (int from = 0; from < 3; ++from)
        for (int to = 0; to < 3; ++to)
            for (int method = 0; method < 3; ++method) {
                SCOPED_TRACE(testing::Message() << from << " to " << to << ", method " << method);
                Bytes src = noise(i420Bytes(LEVELS[from]), 1);
                Bytes dst;
                EXPECT_EQ(OVideoScaler::scaleI420Frame(level(from), src, level(to), dst, METHODS[method]), 0);
                EXPECT_TRUE(dst == plainScale(src, LEVELS[from], LEVELS[to], FILTERS[method]));
                EXPECT_TRUE(src == noise(src.size(), 1)) << "the source changed";
            }
}

TEST(ScaleYUY2Frame, GivesTheBytesOfTheRoundTripThroughLibyuv) {
    for (int from = 0; from < 3; ++from)
        for (int to = 0; to < 3; ++to)
            for (int method = 0; method < 3; ++method) {
                SCOPED_TRACE(testing::Message() << from << " to " << to << ", method " << method);
                Bytes src = noise(yuy2Bytes(LEVELS[from]), 2);
                Bytes dst;
                EXPECT_EQ(OVideoScaler::scaleYUY2Frame(level(from), src, level(to), dst, METHODS[method]), 0);
                EXPECT_TRUE(dst == plainYuy2Scale(src, LEVELS[from], LEVELS[to], FILTERS[method]));
                EXPECT_TRUE(src == noise(src.size(), 2)) << "the source changed";
            }
}

TEST(ScaleI420Frame, From460800BytesOfSdGives115200OfLdAnd1382400OfHd) {
    Bytes src = noise(460800, 3);
    Bytes dst;
    EXPECT_EQ(OVideoScaler::scaleI420Frame(VIDEO_QUALITY_SD, src, VIDEO_QUALITY_LD, dst, SCALE_METHOD_BOX),
              0);
    EXPECT_EQ(dst.size(), 115200u);
    EXPECT_EQ(OVideoScaler::scaleI420Frame(VIDEO_QUALITY_SD, src, VIDEO_QUALITY_HD, dst, SCALE_METHOD_BOX),
              0);
    EXPECT_EQ(dst.size(), 1382400u);
}

TEST(ScaleI420Frame, BetweenEqualLevelsCopies) {
    for (int quality = 0; quality < 3; ++quality)
        for (ScaleMethod method : METHODS) {
            Bytes src = noise(i420Bytes(LEVELS[quality]), 4);
            Bytes dst;
            EXPECT_EQ(OVideoScaler::scaleI420Frame(level(quality), src, level(quality), dst, method), 0);
            EXPECT_TRUE(dst == src);
        }
}

TEST(ScaleI420Frame, RefusesAWrongLengthAndLeavesTheDestinationAsItWas) {
    // Among them a YUY2 frame and the frames of the other levels.
    for (size_t length : {0u, 460799u, 460801u, 614400u, 115200u, 1382400u}) {
        Bytes src(length);
        Bytes dst = {1, 2, 3};
        EXPECT_EQ(
            OVideoScaler::scaleI420Frame(VIDEO_QUALITY_SD, src, VIDEO_QUALITY_LD, dst, SCALE_METHOD_NONE),
            -1);
        EXPECT_EQ(dst, Bytes({1, 2, 3})) << length;
    }
}

TEST(ScaleYUY2Frame, RefusesAWrongLengthAndLeavesTheDestinationAsItWas) {
    // Among them an I420 frame and the frames of the other levels.
    for (size_t length : {0u, 614399u, 614401u, 460800u, 153600u, 1843200u}) {
        Bytes src(length);
        Bytes dst = {1, 2, 3};
        EXPECT_EQ(
            OVideoScaler::scaleYUY2Frame(VIDEO_QUALITY_SD, src, VIDEO_QUALITY_LD, dst, SCALE_METHOD_NONE),
            -1);
        EXPECT_EQ(dst, Bytes({1, 2, 3})) << length;
    }
}

TEST(ScaleI420Frame, CutsALongerDestinationAndKeepsItsStorage) {
    Bytes src = noise(460800, 5);
    Bytes dst(2000000, Guarded::FILL);
    const uint8_t* const storage = dst.data();
    EXPECT_EQ(OVideoScaler::scaleI420Frame(VIDEO_QUALITY_SD, src, VIDEO_QUALITY_LD, dst, SCALE_METHOD_NONE),
              0);
    EXPECT_EQ(dst.size(), 115200u);
    EXPECT_EQ(dst.data(), storage);
}

TEST(ScaleI420Frame, ToAnUnknownLevelEmptiesTheDestinationAndAnswersMinus1) {
    for (int unknown : NO_LEVELS) {
        Bytes src(460800);
        Bytes dst(10, Guarded::FILL);
        EXPECT_EQ(OVideoScaler::scaleI420Frame(VIDEO_QUALITY_SD, src, level(unknown), dst, SCALE_METHOD_BOX),
                  -1);
        EXPECT_TRUE(dst.empty()) << unknown;
    }
}

TEST(ScaleI420Frame, FromAnUnknownLevelRefusesEverySourceThatIsNotEmpty) {
    for (int unknown : NO_LEVELS) {
        Bytes src(460800);
        Bytes dst(10, Guarded::FILL);
        EXPECT_EQ(OVideoScaler::scaleI420Frame(level(unknown), src, VIDEO_QUALITY_LD, dst, SCALE_METHOD_BOX),
                  -1);
        EXPECT_EQ(dst, Bytes(10, Guarded::FILL)) << unknown;
    }
}

TEST(ScaleI420Frame, FromAnUnknownLevelWithAnEmptySourceResizesBeforeItAnswersMinus1) {
    for (int unknown : NO_LEVELS)
        for (size_t capacity : {0u, 64u}) {
            Bytes src(capacity);
            src.clear();
            Bytes dst(10, Guarded::FILL);
            EXPECT_EQ(
                OVideoScaler::scaleI420Frame(level(unknown), src, VIDEO_QUALITY_LD, dst, SCALE_METHOD_BOX),
                -1);
            // What was there is kept, what is added is zero.
            Bytes wanted(115200, 0);
            std::fill_n(wanted.begin(), 10, Guarded::FILL);
            EXPECT_TRUE(dst == wanted) << unknown;
        }
}

TEST(ScaleYUY2Frame, ToAnUnknownLevelEmptiesTheDestinationAndAnswers0) {
    for (int unknown : NO_LEVELS) {
        Bytes src = noise(614400, 6);
        Bytes dst(10, Guarded::FILL);
        EXPECT_EQ(OVideoScaler::scaleYUY2Frame(VIDEO_QUALITY_SD, src, level(unknown), dst, SCALE_METHOD_BOX),
                  0);
        EXPECT_TRUE(dst.empty()) << unknown;
    }
}

TEST(ScaleYUY2Frame, FromAnUnknownLevelWithAnEmptySourceGivesZerosAndAnswers0) {
    for (int unknown : NO_LEVELS)
        for (size_t capacity : {0u, 64u}) {
            Bytes src(capacity);
            src.clear();
            Bytes dst(10, Guarded::FILL);
            EXPECT_EQ(
                OVideoScaler::scaleYUY2Frame(level(unknown), src, VIDEO_QUALITY_LD, dst, SCALE_METHOD_BOX),
                0);
            EXPECT_TRUE(dst == Bytes(153600, 0)) << unknown;
        }
}

TEST(ScaleYUY2Frame, BetweenUnknownLevelsAnswers0WithAnEmptyDestination) {
    Bytes src;
    Bytes dst(10, Guarded::FILL);
    EXPECT_EQ(OVideoScaler::scaleYUY2Frame(level(3), src, level(-1), dst, SCALE_METHOD_NONE), 0);
    EXPECT_TRUE(dst.empty());
}

TEST(ScaleMethods, GiveDifferentPicturesOfTheSameSize) {
    Bytes src = noise(i420Bytes(LEVELS[2]), 7);
    Bytes results[3];
    for (int method = 0; method < 3; ++method) {
        EXPECT_EQ(OVideoScaler::scaleI420Frame(VIDEO_QUALITY_HD, src, VIDEO_QUALITY_LD, results[method],
                                               METHODS[method]),
                  0);
        EXPECT_EQ(results[method].size(), 115200u);
    }
    EXPECT_TRUE(results[0] != results[1]);
    EXPECT_TRUE(results[0] != results[2]);
    EXPECT_TRUE(results[1] != results[2]);
}

// Only to levels that are not larger: libyuv takes such a number for a box filter that is not made for
// enlarging and then reads beyond the source.
TEST(ScaleMethods, OfOtherNumbersReachLibyuvUnchanged) {
    for (int number : {3, 4, 7, 100, -1, INT_MAX, INT_MIN})
        for (int to : {0, 1, 2}) {
            Bytes src = noise(i420Bytes(LEVELS[2]), 8);
            Bytes dst;
            EXPECT_EQ(OVideoScaler::scaleI420Frame(VIDEO_QUALITY_HD, src, level(to), dst,
                                                   static_cast<ScaleMethod>(number)),
                      0);
            const Bytes wanted = plainScale(src, LEVELS[2], LEVELS[to], number);
            EXPECT_TRUE(dst == wanted) << number << " to level " << to;
        }
}

// Memory fresh from the kernel for each call would cost many times what the scaling does. The sanitizers have
// a heap of their own.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(ScaleYUY2Frame, TakesNoFreshPagesOnceItHasRun) {
    Bytes src = noise(yuy2Bytes(LEVELS[2]), 9);
    Bytes dst;
    const auto faultsOf = [&](int calls) {
        rusage before, after;
        getrusage(RUSAGE_THREAD, &before);
        for (int i = 0; i < calls; ++i)
            OVideoScaler::scaleYUY2Frame(VIDEO_QUALITY_HD, src, VIDEO_QUALITY_HD, dst, SCALE_METHOD_NONE);
        getrusage(RUSAGE_THREAD, &after);
        return after.ru_minflt - before.ru_minflt;
    };
    faultsOf(3);
    EXPECT_LT(faultsOf(20), 200); // two frames of the temporary memory alone are 675 pages a call
}
#endif
