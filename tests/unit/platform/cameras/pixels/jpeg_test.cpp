// What cameras send as JPEG: whatever the decoder takes is shown, and nothing that was cut.
#include "platform/cameras/pixels/jpeg.h"

#include "platform/cameras/pixels/convert.h"
#include "support/jpeg_pictures.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <utility>
#include <vector>

namespace ostrel::tests {

using namespace cameras::pixels;
using support::JPEG_QUADRANTS;
using support::JpegOptions;
using support::quadrantsAsJpeg;

namespace {

const int WIDTH = 96, HEIGHT = 64;

Fault faultOf(const std::vector<uint8_t>& jpeg) {
    return faultOfJpeg(jpeg.data(), jpeg.size());
}

// The size of the picture is only in its header.
Fault convertTo(const std::vector<uint8_t>& jpeg, const Output& to) {
    static PixelPool pool;
    Picture picture;
    picture.layout = Layout::Jpeg;
    picture.planes[0] = {jpeg.data(), jpeg.size(), 0};
    return convert(picture, to, pool);
}

Fault converted(const std::vector<uint8_t>& jpeg, int width = WIDTH, int height = HEIGHT) {
    std::vector<uint8_t> bgra(static_cast<size_t>(width * height * 4), 7);
    return convertTo(jpeg, {OutputFormat::Bgra, bgra.data(), width, height, width * 4});
}

void expectQuadrants(const std::vector<uint8_t>& jpeg, int width, int height, bool grey = false) {
    for (const OutputFormat format : {OutputFormat::Bgra, OutputFormat::Bgr, OutputFormat::Grey}) {
        const int size = bytesPerPixel(format), stride = width * size + 5;
        std::vector<uint8_t> pixels(static_cast<size_t>(stride * height), 7);
        ASSERT_EQ(convertTo(jpeg, {format, pixels.data(), width, height, stride}), Fault::None);
        for (int quadrant = 0; quadrant < 4; ++quadrant) {
            const int x = (quadrant % 2) * width / 2 + width / 4;
            const int y = (quadrant / 2) * height / 2 + height / 4;
            const uint8_t* pixel = pixels.data() + y * stride + x * size;
            const uint8_t* colour = JPEG_QUADRANTS[quadrant];
            const double luma = 0.114 * colour[0] + 0.587 * colour[1] + 0.299 * colour[2];
            const bool lumaOnly = grey || format == OutputFormat::Grey;
            for (int c = 0; c < size; ++c)
                EXPECT_NEAR(pixel[c],
                            c == 3     ? 255
                            : lumaOnly ? luma
                                       : colour[c],
                            c == 3 ? 0 : 5)
                    << "quadrant " << quadrant << " byte " << c;
        }
        for (int i = width * size; i < stride; ++i)
            EXPECT_EQ(pixels[static_cast<size_t>(i)], 7) << "written behind a row";
    }
}

void expectWhole(const std::vector<uint8_t>& jpeg) {
    EXPECT_EQ(faultOf(jpeg), Fault::None);
    expectQuadrants(jpeg, WIDTH, HEIGHT);
}

size_t startOfScan(const std::vector<uint8_t>& jpeg) {
    const uint8_t marker[] = {0xFF, 0xDA};
    return static_cast<size_t>(std::search(jpeg.begin(), jpeg.end(), marker, marker + 2) - jpeg.begin());
}

std::vector<uint8_t> cutTo(std::vector<uint8_t> jpeg, size_t length) {
    jpeg.resize(length);
    return jpeg;
}

} // namespace

TEST(JpegPicture, DecodesTheSubsamplingsThatCamerasSend) {
    for (const auto& factors : {std::make_pair(2, 1), std::make_pair(2, 2), std::make_pair(1, 1)}) {
        JpegOptions options;
        options.horizontal = factors.first;
        options.vertical = factors.second;
        const auto jpeg = quadrantsAsJpeg(WIDTH, HEIGHT, options);
        expectWhole(jpeg);
    }
    JpegOptions grey;
    grey.grey = true;
    expectQuadrants(quadrantsAsJpeg(WIDTH, HEIGHT, grey), WIDTH, HEIGHT, true);
}

TEST(JpegPicture, DecodesWithoutHuffmanTables) {
    JpegOptions options;
    options.tables = false;
    expectWhole(quadrantsAsJpeg(WIDTH, HEIGHT, options));
}

TEST(JpegPicture, ScalesToAnySize) {
    const auto jpeg = quadrantsAsJpeg(WIDTH, HEIGHT);
    for (const auto& size : {std::make_pair(48, 32), std::make_pair(24, 16), std::make_pair(12, 8),
                             std::make_pair(192, 128), std::make_pair(40, 60), std::make_pair(50, 17)})
        expectQuadrants(jpeg, size.first, size.second);
}

TEST(JpegPicture, ReducesWhileDecodingToTheNextSizeThatCovers) {
    const auto reduced = [](int width, int height, int wantedWidth, int wantedHeight) {
        reduceForJpeg(width, height, wantedWidth, wantedHeight);
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

TEST(JpegPicture, ItsHeaderDecidesItsSize) {
    for (const auto& size : {std::make_pair(64, 96), std::make_pair(160, 120), std::make_pair(31, 17)}) {
        const auto jpeg = quadrantsAsJpeg(size.first, size.second);
        JpegSize found;
        ASSERT_EQ(sizeOfJpeg(jpeg.data(), jpeg.size(), found), Fault::None);
        EXPECT_EQ(std::make_pair(found.width, found.height), size);
        expectWhole(jpeg);
    }
}

TEST(JpegPicture, BytesBehindTheEndAreNormal) {
    auto jpeg = quadrantsAsJpeg(WIDTH, HEIGHT);
    jpeg.resize(jpeg.size() + 3000, 0);
    expectWhole(jpeg);
    jpeg.back() = 0xFF;
    EXPECT_EQ(faultOf(jpeg), Fault::None);
}

TEST(JpegPicture, FillBytesAndZerosBeforeTheStartAreNormal) {
    const auto jpeg = quadrantsAsJpeg(WIDTH, HEIGHT);
    for (const std::vector<uint8_t>& before : {std::vector<uint8_t>{0xFF},
                                               {0x00},
                                               {0xFF, 0xFF, 0xFF},
                                               {0x00, 0x00, 0xFF},
                                               {0, 0, 0, 0, 0, 0, 0, 0}}) {
        auto late = before;
        late.insert(late.end(), jpeg.begin(), jpeg.end());
        expectWhole(late);
    }
}

TEST(JpegPicture, FillBytesAndStrayBytesBetweenSegmentsAreNormal) {
    const auto whole = quadrantsAsJpeg(WIDTH, HEIGHT);
    testing::internal::CaptureStderr();
    for (const std::vector<uint8_t>& between :
         {std::vector<uint8_t>{0xFF}, {0xFF, 0xFF, 0xFF}, {0x00}, {0x00, 0x12, 0x34}})
        for (const size_t at : {size_t(2), startOfScan(whole)}) {
            auto jpeg = whole;
            jpeg.insert(jpeg.begin() + static_cast<ptrdiff_t>(at), between.begin(), between.end());
            expectWhole(jpeg);
        }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(JpegPicture, OneThatLacksOnlyItsEndMarkerIsWhole) {
    JpegOptions restarts;
    restarts.restart = 1;
    for (const JpegOptions& options : {JpegOptions(), restarts}) {
        const auto whole = quadrantsAsJpeg(WIDTH, HEIGHT, options);
        testing::internal::CaptureStderr();
        expectWhole(cutTo(whole, whole.size() - 2));
        expectWhole(cutTo(whole, whole.size() - 1));
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    }
}

TEST(JpegPicture, OneCutOffAnywhereElseIsFoundOut) {
    JpegOptions restarts;
    restarts.restart = 1;
    for (const JpegOptions& options : {JpegOptions(), restarts}) {
        const auto whole = quadrantsAsJpeg(WIDTH, HEIGHT, options);
        // The last bytes may be filling, of which the decoder needs none.
        for (size_t length = 2; length < whole.size() - 4; ++length) {
            ASSERT_EQ(faultOf(cutTo(whole, length)), Fault::Truncated) << length;
            ASSERT_EQ(converted(cutTo(whole, length)), Fault::Truncated) << length;
        }
    }
}

TEST(JpegPicture, OneWithoutAnyDataIsFoundOut) {
    auto jpeg = quadrantsAsJpeg(WIDTH, HEIGHT);
    const size_t scan = startOfScan(jpeg);
    jpeg.erase(jpeg.begin() + static_cast<ptrdiff_t>(scan) + 2 + 12, jpeg.end() - 2);
    EXPECT_EQ(faultOf(jpeg), Fault::Truncated);
    EXPECT_EQ(converted(jpeg), Fault::Truncated);
}

TEST(JpegPicture, AnEmptyOneIsFoundOut) {
    EXPECT_EQ(faultOf({}), Fault::Empty);
    EXPECT_EQ(converted({}), Fault::Empty);
}

TEST(JpegPicture, OneWithoutItsStartIsFoundOut) {
    auto jpeg = quadrantsAsJpeg(WIDTH, HEIGHT);
    jpeg.erase(jpeg.begin(), jpeg.begin() + 2);
    EXPECT_EQ(faultOf(jpeg), Fault::NotJpeg);
    EXPECT_EQ(converted(jpeg), Fault::NotJpeg);
    EXPECT_NE(faultOf(std::vector<uint8_t>(5000, 0)), Fault::None);
    EXPECT_NE(faultOf(std::vector<uint8_t>(5000, 0xFF)), Fault::None);
}

TEST(JpegPicture, ProgressiveOnesAreRefused) {
    JpegOptions options;
    options.progressive = true;
    const auto jpeg = quadrantsAsJpeg(WIDTH, HEIGHT, options);
    EXPECT_EQ(faultOf(jpeg), Fault::Unsupported);
    EXPECT_EQ(converted(jpeg), Fault::Unsupported);
}

TEST(JpegPicture, OneWhoseDataEndsHalfWayBeforeItsEndMarkerDoesNotDecode) {
    const auto whole = quadrantsAsJpeg(WIDTH, HEIGHT);
    const size_t scan = startOfScan(whole);
    auto half = cutTo(whole, scan + (whole.size() - scan) / 2);
    half.push_back(0xFF);
    half.push_back(0xD9); // it looks whole
    EXPECT_EQ(faultOf(half), Fault::None);
    testing::internal::CaptureStderr();
    EXPECT_EQ(converted(half), Fault::Truncated);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(JpegPicture, OneThatLacksItsLastBytesBeforeItsEndMarkerStillDecodes) {
    auto jpeg = quadrantsAsJpeg(WIDTH, HEIGHT);
    jpeg.erase(jpeg.end() - 4, jpeg.end() - 2);
    testing::internal::CaptureStderr();
    EXPECT_EQ(faultOf(jpeg), Fault::None);
    EXPECT_EQ(converted(jpeg), Fault::None);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// The sanitizers watch; here it is enough that nothing crashes, hangs or prints.
TEST(JpegPicture, SurvivesDamageOfAnyKind) {
    std::mt19937 random(20240611);
    JpegOptions restarts;
    restarts.restart = 1;
    const std::vector<uint8_t> originals[] = {quadrantsAsJpeg(WIDTH, HEIGHT),
                                              quadrantsAsJpeg(WIDTH, HEIGHT, restarts)};
    testing::internal::CaptureStderr();
    int refused = 0;
    for (int round = 0; round < 3000; ++round) {
        auto jpeg = originals[round % 2];
        for (unsigned n = random() % 8; n > 0; --n)
            jpeg[random() % jpeg.size()] = static_cast<uint8_t>(random());
        if (random() % 4 == 0)
            jpeg.resize(random() % jpeg.size());
        faultOf(jpeg);
        refused += converted(jpeg, round % 3 ? WIDTH : 20, round % 3 ? HEIGHT : 30) != Fault::None;
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_GT(refused, 300);
    EXPECT_LT(refused, 3000);
}

} // namespace ostrel::tests
