#include "platform/cameras/pixels/bgra.h"
#include "platform/cameras/pixels/jpeg_check.h"
#include "platform/cameras/pixels/jpeg_decode.h"
#include "support/jpeg_pictures.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace ostrel {
namespace tests {

using namespace support;

using cameras::pixels::decodeJpeg;
using cameras::pixels::faultOfJpeg;
using cameras::pixels::Layout;
using cameras::pixels::Picture;
using cameras::pixels::PixelPool;

namespace {

const int kWidth = 96, kHeight = 64;

std::string faultOf(const std::vector<uint8_t>& jpeg, int width = kWidth, int height = kHeight) {
    const char* fault = faultOfJpeg(jpeg.data(), jpeg.size(), width, height);
    return fault ? fault : "";
}

bool convert(const std::vector<uint8_t>& jpeg, std::vector<uint8_t>& bgra, int width, int height) {
    PixelPool pool;
    Picture picture;
    picture.layout = Layout::Jpeg;
    picture.width = kWidth;
    picture.height = kHeight;
    picture.data = jpeg.data();
    picture.bytes = jpeg.size();
    bgra.assign(static_cast<size_t>(width * height * 4), 7);
    return toBgra(picture, bgra.data(), width, height, width * 4, pool);
}

bool converts(const std::vector<uint8_t>& jpeg) {
    std::vector<uint8_t> bgra;
    return convert(jpeg, bgra, kWidth, kHeight);
}

void expectQuadrants(const std::vector<uint8_t>& jpeg, int width, int height, bool grey = false) {
    std::vector<uint8_t> bgra;
    ASSERT_TRUE(convert(jpeg, bgra, width, height));
    for (int quadrant = 0; quadrant < 4; ++quadrant) {
        const int x = (quadrant % 2) * width / 2 + width / 4, y = (quadrant / 2) * height / 2 + height / 4;
        const uint8_t* pixel = bgra.data() + static_cast<ptrdiff_t>(y * width + x) * 4;
        const uint8_t* expected = kJpegQuadrants[quadrant];
        const double luma = 0.114 * expected[0] + 0.587 * expected[1] + 0.299 * expected[2];
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(pixel[c], grey ? luma : expected[c], 5) << "quadrant " << quadrant << " colour " << c;
        EXPECT_EQ(pixel[3], 255);
    }
}

} // namespace

TEST(JpegPicture, DecodesTheSubsamplingsThatCamerasSend) {
    for (const auto& factors : {std::make_pair(2, 1), std::make_pair(2, 2), std::make_pair(1, 1)}) {
        JpegOptions options;
        options.horizontal = factors.first;
        options.vertical = factors.second;
        const auto jpeg = quadrantsAsJpeg(kWidth, kHeight, options);
        EXPECT_EQ(faultOf(jpeg), "");
        expectQuadrants(jpeg, kWidth, kHeight);
    }
    JpegOptions grey;
    grey.grey = true;
    expectQuadrants(quadrantsAsJpeg(kWidth, kHeight, grey), kWidth, kHeight, true);
}

TEST(JpegPicture, DecodesWithoutHuffmanTables) {
    JpegOptions options;
    options.tables = false;
    const auto jpeg = quadrantsAsJpeg(kWidth, kHeight, options);
    EXPECT_EQ(faultOf(jpeg), "");
    expectQuadrants(jpeg, kWidth, kHeight);
}

TEST(JpegPicture, ScalesToAnySize) {
    const auto jpeg = quadrantsAsJpeg(kWidth, kHeight);
    for (const auto& size : {std::make_pair(48, 32), std::make_pair(24, 16), std::make_pair(12, 8),
                             std::make_pair(192, 128), std::make_pair(40, 60), std::make_pair(50, 17)})
        expectQuadrants(jpeg, size.first, size.second);
}

TEST(JpegPicture, ReducesWhileDecodingToTheNextSizeThatCovers) {
    const auto reduced = [](int width, int height, int wantedWidth, int wantedHeight) {
        cameras::pixels::reduceForJpeg(width, height, wantedWidth, wantedHeight);
        return std::make_pair(width, height);
    };
    EXPECT_EQ(reduced(1280, 720, 640, 360), std::make_pair(640, 360));
    EXPECT_EQ(reduced(1280, 720, 641, 360), std::make_pair(1280, 720));
    EXPECT_EQ(reduced(1280, 720, 640, 480), std::make_pair(1280, 720));
    EXPECT_EQ(reduced(1280, 720, 320, 180), std::make_pair(320, 180));
    EXPECT_EQ(reduced(1280, 720, 1, 1), std::make_pair(160, 90));
    EXPECT_EQ(reduced(101, 51, 13, 7), std::make_pair(13, 7));
    EXPECT_EQ(reduced(1, 1000, 1, 1), std::make_pair(1, 125));
}

TEST(JpegPicture, BytesBehindTheEndAreNormal) {
    auto jpeg = quadrantsAsJpeg(kWidth, kHeight);
    jpeg.resize(jpeg.size() + 3000, 0);
    EXPECT_EQ(faultOf(jpeg), "");
    expectQuadrants(jpeg, kWidth, kHeight);
    jpeg.back() = 0xFF;
    EXPECT_EQ(faultOf(jpeg), "");
}

TEST(JpegPicture, FillBytesBeforeMarkersAreNormal) {
    auto jpeg = quadrantsAsJpeg(kWidth, kHeight);
    jpeg.insert(jpeg.begin() + 2, 5, 0xFF);
    EXPECT_EQ(faultOf(jpeg), "");
    expectQuadrants(jpeg, kWidth, kHeight);
}

TEST(JpegPicture, AnEmptyOneIsFoundOut) {
    EXPECT_EQ(faultOf({}), "empty");
    EXPECT_FALSE(converts({}));
}

TEST(JpegPicture, OneWithoutItsStartIsFoundOut) {
    auto jpeg = quadrantsAsJpeg(kWidth, kHeight);
    jpeg.erase(jpeg.begin(), jpeg.begin() + 2);
    EXPECT_EQ(faultOf(jpeg), "not a JPEG picture");
    EXPECT_FALSE(converts(jpeg));
    EXPECT_EQ(faultOf(std::vector<uint8_t>(5000, 0)), "not a JPEG picture");
}

TEST(JpegPicture, OneCutOffAnywhereIsFoundOut) {
    const auto whole = quadrantsAsJpeg(kWidth, kHeight);
    for (size_t length = 1; length < whole.size(); ++length) {
        const std::vector<uint8_t> cut(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length));
        ASSERT_NE(faultOf(cut), "") << length;
    }
}

TEST(JpegPicture, OneOfAnotherSizeIsFoundOut) {
    const auto jpeg = quadrantsAsJpeg(kWidth, kHeight);
    EXPECT_EQ(faultOf(jpeg, kWidth, kHeight + 1), "wrong size");
    EXPECT_EQ(faultOf(jpeg, kHeight, kWidth), "wrong size");
    std::vector<uint8_t> bgra(200 * 200 * 4);
    EXPECT_FALSE(decodeJpeg(jpeg.data(), jpeg.size(), 200, 200, bgra.data(), 200, 200, 800));
}

TEST(JpegPicture, ProgressiveOnesAreRefused) {
    JpegOptions options;
    options.progressive = true;
    const auto jpeg = quadrantsAsJpeg(kWidth, kHeight, options);
    EXPECT_EQ(faultOf(jpeg), "unsupported JPEG");
    EXPECT_FALSE(converts(jpeg));
}

TEST(JpegPicture, OneWhoseDataEndsHalfWayDoesNotDecode) {
    const auto whole = quadrantsAsJpeg(kWidth, kHeight);
    const uint8_t startOfScan[] = {0xFF, 0xDA};
    const auto scan = std::search(whole.begin(), whole.end(), startOfScan, startOfScan + 2);
    std::vector<uint8_t> half(whole.begin(), scan + (whole.end() - scan) / 2);
    half.push_back(0xFF);
    half.push_back(0xD9); // it looks whole
    EXPECT_EQ(faultOf(half), "");
    testing::internal::CaptureStderr();
    EXPECT_FALSE(converts(half));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(JpegPicture, OneThatLacksItsLastBytesStillDecodes) {
    auto jpeg = quadrantsAsJpeg(kWidth, kHeight);
    jpeg.erase(jpeg.end() - 4, jpeg.end() - 2);
    EXPECT_EQ(faultOf(jpeg), "");
    testing::internal::CaptureStderr();
    EXPECT_TRUE(converts(jpeg));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// The sanitizers watch; here it is enough that nothing crashes, hangs or prints.
TEST(JpegPicture, SurvivesDamageOfAnyKind) {
    std::mt19937 random(20240611);
    JpegOptions restarts;
    restarts.restart = 1;
    const std::vector<uint8_t> originals[] = {quadrantsAsJpeg(kWidth, kHeight),
                                              quadrantsAsJpeg(kWidth, kHeight, restarts)};
    testing::internal::CaptureStderr();
    int refused = 0;
    for (int round = 0; round < 3000; ++round) {
        auto jpeg = originals[round % 2];
        for (unsigned n = random() % 8; n > 0; --n)
            jpeg[random() % jpeg.size()] = static_cast<uint8_t>(random());
        if (random() % 4 == 0)
            jpeg.resize(random() % jpeg.size());
        faultOf(jpeg);
        std::vector<uint8_t> bgra;
        refused += !convert(jpeg, bgra, round % 3 ? kWidth : 20, round % 3 ? kHeight : 30);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_GT(refused, 300);
    EXPECT_LT(refused, 3000);
}

} // namespace tests
} // namespace ostrel
