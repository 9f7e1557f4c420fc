// Pictures whose fields are stored one after the other: the rows come out in order, each with its own
// colours.
#include "platform/cameras/pixels/fields.h"

#include "platform/cameras/pixels/convert.h"
#include "unit/platform/cameras/pixels/drawn_picture.h"

#include <cmath>
#include <gtest/gtest.h>
#include <vector>

namespace ostrel::tests {

using namespace cameras::pixels;

namespace {

const Fields ORDERS[] = {Fields::TopFirst, Fields::BottomFirst};

Picture greyOf(const std::vector<uint8_t>& bytes, int width, int height, Fields fields) {
    Picture picture;
    picture.layout = Layout::Grey;
    picture.fields = fields;
    picture.width = width;
    picture.height = height;
    setBlock(picture, bytes.data(), bytes.size(), width);
    return picture;
}

std::vector<int> converted(const Picture& picture, int height) {
    PixelPool pool;
    std::vector<uint8_t> grey(static_cast<size_t>(picture.width * height));
    EXPECT_EQ(convert(picture, {OutputFormat::Grey, grey.data(), picture.width, height, picture.width}, pool),
              Fault::None);
    std::vector<int> rows;
    for (size_t y = 0; y < static_cast<size_t>(height); ++y)
        rows.push_back(grey[y * static_cast<size_t>(picture.width)]);
    return rows;
}

} // namespace

TEST(StoredFields, AreWovenInTheOrderThatTheyAreStoredIn) {
    const std::vector<uint8_t> even = {10, 11, 30, 31, 20, 21, 40, 41}; // two pixels a row
    EXPECT_EQ(converted(greyOf(even, 2, 4, Fields::TopFirst), 4), std::vector<int>({10, 20, 30, 40}));
    EXPECT_EQ(converted(greyOf(even, 2, 4, Fields::BottomFirst), 4), std::vector<int>({20, 10, 40, 30}));
    EXPECT_EQ(converted(greyOf(even, 2, 4, Fields::Woven), 4), std::vector<int>({10, 30, 20, 40}));
}

TEST(StoredFields, OfAnOddNumberOfRowsAreWovenToo) {
    const std::vector<uint8_t> odd = {10, 10, 30, 30, 50, 50, 20, 20, 40, 40};
    EXPECT_EQ(converted(greyOf(odd, 2, 5, Fields::TopFirst), 5), std::vector<int>({10, 20, 30, 40, 50}));
    const std::vector<uint8_t> bottom = {20, 20, 40, 40, 10, 10, 30, 30, 50, 50};
    EXPECT_EQ(converted(greyOf(bottom, 2, 5, Fields::BottomFirst), 5),
              std::vector<int>({10, 20, 30, 40, 50}));
    EXPECT_EQ(converted(greyOf({7, 7}, 2, 1, Fields::BottomFirst), 1), std::vector<int>({7}));
}

TEST(StoredFields, AreWovenBeforeTheyAreScaled) {
    // A ramp from top to bottom is a ramp again at twice the height; of two ramps it would be a saw.
    std::vector<uint8_t> ramp;
    for (int first = 0; first < 2; ++first)
        for (int y = first; y < 32; y += 2)
            ramp.insert(ramp.end(), 4, static_cast<uint8_t>(y * 8));
    const std::vector<int> rows = converted(greyOf(ramp, 4, 32, Fields::TopFirst), 64);
    for (size_t y = 1; y < rows.size(); ++y)
        EXPECT_GE(rows[y], rows[y - 1]) << y;
    EXPECT_LE(rows.front(), 4);
    EXPECT_GE(rows.back(), 31 * 8 - 4);
}

// One field is orange and the other blue, so that a row that takes its colour from the other field shows.
TEST(StoredFields, KeepTheirOwnColoursInEveryLayout) {
    const Colour colours[] = {{210, 130, 40}, {40, 70, 190}};
    PixelPool pool;
    for (const Fields order : ORDERS)
        for (const bool blocks : {false, true})
            for (const Layout layout : RAW_LAYOUTS) {
                if (!isYuv(layout) && layout != Layout::Bgrx && layout != Layout::Rgb)
                    continue;
                SCOPED_TRACE(testing::Message() << "layout " << static_cast<int>(layout));
                Storage storage;
                storage.fields = order;
                storage.blocks = blocks;
                storage.padding = 8;
                const DrawnPicture drawn(
                    layout, 30, 24, [&](int, int y) { return colours[y % 2]; }, storage);
                std::vector<uint8_t> bgr(24 * 100);
                ASSERT_EQ(convert(drawn.picture, {OutputFormat::Bgr, bgr.data(), 30, 24, 100}, pool),
                          Fault::None);
                for (int y = 0; y < 24; ++y)
                    for (int x = 0; x < 30; ++x) {
                        const uint8_t* pixel = bgr.data() + y * 100 + x * 3;
                        ASSERT_NEAR(pixel[0], colours[y % 2].b, 4) << x << ',' << y;
                        ASSERT_NEAR(pixel[1], colours[y % 2].g, 4) << x << ',' << y;
                        ASSERT_NEAR(pixel[2], colours[y % 2].r, 4) << x << ',' << y;
                    }
            }
}

TEST(StoredFields, OfEveryLayoutFillPicturesOfAnySize) {
    PixelPool pool;
    for (const Fields order : ORDERS)
        for (const Layout layout : RAW_LAYOUTS) {
            Storage storage;
            storage.fields = order;
            // The height makes an odd number of chroma rows.
            const DrawnPicture drawn(
                layout, 21, 26,
                [](int, int) {
                    return Colour{90, 90, 90};
                },
                storage);
            for (const int height : {26, 52, 13}) {
                std::vector<uint8_t> grey(static_cast<size_t>(21 * height));
                ASSERT_EQ(convert(drawn.picture, {OutputFormat::Grey, grey.data(), 21, height, 21}, pool),
                          Fault::None);
                for (const uint8_t value : grey)
                    ASSERT_NEAR(value, 90, 6) << static_cast<int>(layout) << " height " << height;
            }
        }
}

} // namespace ostrel::tests
