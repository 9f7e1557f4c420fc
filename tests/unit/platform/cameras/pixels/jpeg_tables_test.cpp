// A camera's picture becomes the one that it would be with everything in it.
#include "platform/cameras/pixels/jpeg_tables.h"

#include "support/jpeg_pictures.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace ostrel::tests {

using cameras::pixels::completeJpeg;
using support::JpegOptions;
using support::quadrantsAsJpeg;

namespace {

std::vector<uint8_t> completed(const std::vector<uint8_t>& jpeg) {
    return completeJpeg(jpeg.data(), jpeg.size());
}

std::vector<uint8_t> pictureOf(bool tables, bool grey = false) {
    JpegOptions options;
    options.tables = tables;
    options.grey = grey;
    return quadrantsAsJpeg(96, 64, options);
}

} // namespace

// The encoder writes the standard tables in the same place and order, so that the bytes can be compared.
TEST(CompleteJpeg, HasTheTablesThatTheEncoderWouldHaveWritten) {
    ASSERT_LT(pictureOf(false).size(), pictureOf(true).size());
    EXPECT_EQ(completed(pictureOf(false)), pictureOf(true));
    EXPECT_EQ(completed(pictureOf(false, true)), pictureOf(true, true));
}

TEST(CompleteJpeg, LeavesAPictureThatHasEverythingAsItIs) {
    EXPECT_EQ(completed(pictureOf(true)), pictureOf(true));
}

TEST(CompleteJpeg, KeepsTablesThatThePictureDefines) {
    // The luma's tables stay, the chroma's go.
    auto jpeg = pictureOf(true);
    const uint8_t chroma[] = {0xFF, 0xC4, 0x00, 0x1F, 0x01};
    const auto from = std::search(jpeg.begin(), jpeg.end(), std::begin(chroma), std::end(chroma));
    ASSERT_NE(from, jpeg.end());
    jpeg.erase(from, from + (2 + 31) + (2 + 181));
    EXPECT_EQ(completed(jpeg), pictureOf(true));
}

TEST(CompleteJpeg, BeginsWithItsStartAndEndsWithItsEnd) {
    const auto whole = pictureOf(true);
    auto camera = pictureOf(false);
    camera.insert(camera.begin(), {0x00, 0x00, 0xFF});
    camera.resize(camera.size() + 500, 0x00);
    EXPECT_EQ(completed(camera), whole);
    auto endless = pictureOf(false);
    endless.resize(endless.size() - 2);
    EXPECT_EQ(completed(endless), whole);
}

TEST(CompleteJpeg, IsEmptyForWhatIsNoPicture) {
    EXPECT_TRUE(completed({}).empty());
    EXPECT_TRUE(completed(std::vector<uint8_t>(100, 0)).empty());
    const auto whole = pictureOf(true);
    EXPECT_TRUE(completed({whole.begin(), whole.begin() + 100}).empty());
}

} // namespace ostrel::tests
