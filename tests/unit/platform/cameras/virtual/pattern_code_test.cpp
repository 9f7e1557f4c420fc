// The cells of the test pattern survive what happens to pictures, and nothing else passes for them.
#include "pictures.h"

#include <gtest/gtest.h>
#include <libyuv.h>

#include <cmath>
#include <random>

using namespace ostrel::tests;

namespace {

const uint32_t STAMPS[][2] = {{0, 0},
                              {1, 0},
                              {0, 1},
                              {0xFFFFFFFFu, 0xFFFFFFFFu},
                              {0x80000001u, 0x55555555u},
                              {123456789u, 3067123456u},
                              {0xAAAAAAAAu, 0x0F0F0F0Fu}};

const int SIZES[][2] = {{160, 120},  {161, 121},   {176, 144},  {320, 180}, {320, 240},
                        {333, 251},  {640, 360},   {640, 480},  {799, 601}, {854, 480},
                        {1280, 720}, {1920, 1080}, {160, 1080}, {1920, 120}};

void expectReads(const Bgra& picture, uint32_t counter, uint32_t clock) {
    uint32_t readCounter = ~counter, readClock = ~clock;
    ASSERT_TRUE(decode(picture, readCounter, readClock)) << picture.width << " x " << picture.height;
    EXPECT_EQ(readCounter, counter);
    EXPECT_EQ(readClock, clock);
}

void expectRefused(const Bgra& picture, const char* what) {
    uint32_t counter = 77, clock = 88;
    EXPECT_FALSE(decode(picture, counter, clock)) << what;
    EXPECT_EQ(counter, 77u) << what;
    EXPECT_EQ(clock, 88u) << what;
}

TEST(PatternCode, ReadsBackEveryStampAtNativeSizes) {
    for (const auto& stamp : STAMPS)
        for (const auto& size : SIZES)
            expectReads(pattern(size[0] & ~1, size[1] & ~1, stamp[0], stamp[1]), stamp[0], stamp[1]);
}

TEST(PatternCode, ReadsBackEveryBit) {
    for (int bit = 0; bit < 32; ++bit) {
        expectReads(pattern(320, 240, 1u << bit, 0), 1u << bit, 0);
        expectReads(pattern(320, 240, 0, 1u << bit), 0, 1u << bit);
    }
}

TEST(PatternCode, ReadsBackFromAnyNativeSizeScaledToAnyOther) {
    for (const auto& native : SIZES)
        for (const auto& size : SIZES)
            expectReads(pattern(native[0] & ~1, native[1] & ~1, 123456789u, 3067123456u, size[0], size[1]),
                        123456789u, 3067123456u);
}

TEST(PatternCode, ReadsBackThroughI420AtAnySize) {
    for (const auto& size : SIZES) {
        Bgra picture = pattern(1280, 720, 0xDEADBEEFu, 0x01234567u, size[0], size[1]);
        const int w = picture.width, h = picture.height, half = (w + 1) / 2;
        std::vector<uint8_t> y(static_cast<size_t>(w) * static_cast<size_t>(h)), u(y.size()), v(y.size());
        ASSERT_EQ(libyuv::ARGBToI420(picture.bytes.data(), picture.stride, y.data(), w, u.data(), half,
                                     v.data(), half, w, h),
                  0);
        ASSERT_EQ(libyuv::I420ToARGB(y.data(), w, u.data(), half, v.data(), half, picture.bytes.data(),
                                     picture.stride, w, h),
                  0);
        expectReads(picture, 0xDEADBEEFu, 0x01234567u);
    }
}

// What JPEG does to a luma plane: each block of 8 x 8 is rounded in the frequency domain. The steps are those
// of the standard's example table at quality 50.
void roundLikeJpeg(Bgra& picture) {
    static const int STEPS[64] = {16, 11, 10, 16, 24,  40,  51,  61,  12, 12, 14, 19, 26,  58,  60,  55,
                                  14, 13, 16, 24, 40,  57,  69,  56,  14, 17, 22, 29, 51,  87,  80,  62,
                                  18, 22, 37, 56, 68,  109, 103, 77,  24, 35, 55, 64, 81,  104, 113, 92,
                                  49, 64, 78, 87, 103, 121, 120, 101, 72, 92, 95, 98, 112, 100, 103, 99};
    double basis[8][8];
    for (int k = 0; k < 8; ++k)
        for (int n = 0; n < 8; ++n)
            basis[k][n] = (k ? 0.5 : std::sqrt(0.125)) * std::cos((2 * n + 1) * k * 3.14159265358979 / 16);
    for (int top = 0; top + 8 <= picture.height; top += 8)
        for (int left = 0; left + 8 <= picture.width; left += 8) {
            double frequency[8][8] = {}, halfway[8][8] = {};
            for (int y = 0; y < 8; ++y)
                for (int k = 0; k < 8; ++k)
                    for (int x = 0; x < 8; ++x) {
                        const uint8_t* p = picture.at(left + x, top + y);
                        halfway[y][k] += basis[k][x] * (0.114 * p[0] + 0.587 * p[1] + 0.299 * p[2] - 128);
                    }
            for (int j = 0; j < 8; ++j)
                for (int k = 0; k < 8; ++k) {
                    for (int y = 0; y < 8; ++y)
                        frequency[j][k] += basis[j][y] * halfway[y][k];
                    frequency[j][k] = std::round(frequency[j][k] / STEPS[8 * j + k]) * STEPS[8 * j + k];
                }
            for (int y = 0; y < 8; ++y)
                for (int x = 0; x < 8; ++x) {
                    double value = 128;
                    for (int j = 0; j < 8; ++j)
                        for (int k = 0; k < 8; ++k)
                            value += basis[j][y] * basis[k][x] * frequency[j][k];
                    const uint8_t grey =
                        static_cast<uint8_t>(std::lround(std::fmin(255, std::fmax(0, value))));
                    uint8_t* p = picture.at(left + x, top + y);
                    p[0] = p[1] = p[2] = grey;
                }
        }
}

TEST(PatternCode, ReadsBackAfterJpegRounding) {
    for (const auto& size : {std::pair<int, int>(160, 120), {320, 240}, {640, 480}}) {
        Bgra picture = pattern(640, 480, 0xC0FFEE11u, 0x89ABCDEFu, size.first, size.second);
        roundLikeJpeg(picture);
        expectReads(picture, 0xC0FFEE11u, 0x89ABCDEFu);
    }
}

TEST(PatternCode, ReadsBackThroughNoise) {
    std::mt19937 random(1);
    std::uniform_int_distribution<int> noise(-60, 60);
    Bgra picture = pattern(320, 240, 4711, 815);
    for (uint8_t& byte : picture.bytes)
        byte = static_cast<uint8_t>(std::min(255, std::max(0, byte + noise(random))));
    expectReads(picture, 4711, 815);
}

TEST(PatternCode, ReadsRowsWithPaddingAndOddStrides) {
    for (const int padding : {1, 2, 3, 64}) {
        Bgra picture(320, 240, padding);
        ostrel::cameras::PatternPainter painter(320, 240);
        ASSERT_TRUE(painter.paint({5, 6}, picture.bytes.data(), 320, 240, picture.stride));
        expectReads(picture, 5, 6);
    }
}

TEST(PatternCode, RefusesATearBetweenAnyTwoRowsThatCanBeSeen) {
    const Bgra before = pattern(320, 240, 1000, 500000), after = pattern(320, 240, 1001, 500033);
    // Each band of cells is 8 rows high and is read at 35 % and 65 %: the first row that is looked at is 2,
    // the last 237.
    for (int tear = 3; tear <= 237; ++tear) {
        Bgra torn = after;
        std::copy_n(before.bytes.begin(), static_cast<ptrdiff_t>(tear) * torn.stride, torn.bytes.begin());
        expectRefused(torn, ("torn at row " + std::to_string(tear)).c_str());
    }
}

TEST(PatternCode, RefusesFramesOfDifferentCountersThatShareTheClock) {
    Bgra torn = pattern(640, 480, 8, 500000);
    const Bgra other = pattern(640, 480, 9, 500000);
    std::copy_n(other.bytes.begin(), torn.bytes.size() / 2, torn.bytes.begin());
    expectRefused(torn, "halves of two frames");
}

TEST(PatternCode, RefusesMirroredAndUpsideDownPictures) {
    for (const auto& stamp : STAMPS) {
        const Bgra upright = pattern(320, 240, stamp[0], stamp[1]);
        Bgra mirrored(320, 240), flipped(320, 240), both(320, 240);
        for (int y = 0; y < 240; ++y)
            for (int x = 0; x < 320; ++x) {
                std::copy_n(upright.at(319 - x, y), 4, mirrored.at(x, y));
                std::copy_n(upright.at(x, 239 - y), 4, flipped.at(x, y));
                std::copy_n(upright.at(319 - x, 239 - y), 4, both.at(x, y));
            }
        expectRefused(mirrored, "mirrored");
        expectRefused(flipped, "upside down");
        expectRefused(both, "turned by 180 degrees");
    }
}

TEST(PatternCode, RefusesASingleWrongCell) {
    const Bgra right = pattern(336, 240, 0x12345678u, 0x9ABCDEF0u);
    for (int band : {0, 1, 14, 15, 28, 29})
        for (int cell = 0; cell < 42; ++cell) {
            Bgra wrong = right;
            for (int y = band * 8; y < band * 8 + 8; ++y)
                for (int x = cell * 8; x < cell * 8 + 8; ++x)
                    for (int c = 0; c < 3; ++c)
                        wrong.at(x, y)[c] = static_cast<uint8_t>(255 - wrong.at(x, y)[c]);
            expectRefused(wrong, "one cell inverted");
        }
}

TEST(PatternCode, RefusesOtherPictures) {
    for (const int grey : {0, 1, 100, 128, 200, 255}) {
        Bgra plain(320, 240);
        std::fill(plain.bytes.begin(), plain.bytes.end(), static_cast<uint8_t>(grey));
        expectRefused(plain, "plain");
    }
    std::mt19937 random(2);
    for (int i = 0; i < 50; ++i) {
        Bgra noise(320, 240);
        for (uint8_t& byte : noise.bytes)
            byte = static_cast<uint8_t>(random());
        expectRefused(noise, "noise");
    }
}

TEST(PatternCode, RefusesArgumentsThatAreNoPicture) {
    const Bgra picture = pattern(320, 240, 1, 2);
    const uint8_t* p = picture.bytes.data();
    uint32_t counter = 77, clock = 88;
    const auto decodes = [&](const uint8_t* bgra, int width, int height, int stride) {
        return ostrel::OVideoTestPatternCamera::decode(bgra, width, height, stride, counter, clock);
    };
    EXPECT_FALSE(decodes(nullptr, 320, 240, 1280));
    EXPECT_FALSE(decodes(p, 0, 240, 1280));
    EXPECT_FALSE(decodes(p, -320, 240, 1280));
    EXPECT_FALSE(decodes(p, 320, 0, 1280));
    EXPECT_FALSE(decodes(p, 320, -240, 1280));
    EXPECT_FALSE(decodes(p, 320, 240, 1279));
    EXPECT_FALSE(decodes(p, 320, 240, 0));
    EXPECT_FALSE(decodes(p, 320, 240, -1280));
    EXPECT_FALSE(decodes(p, 1, 1, 4));
    EXPECT_EQ(counter, 77u);
    EXPECT_EQ(clock, 88u);
}

} // namespace
