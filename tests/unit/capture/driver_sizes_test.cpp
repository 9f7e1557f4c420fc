#include "driver_test.h"

#include <algorithm>
#include <climits>
#include <new>

using namespace ostrel;
using support::numberIn;

namespace {

class DriverSizes : public support::DriverTest {
protected:
    DriverSizes() : camera(attach("camera")) {}

    // The driver still does what it is for.
    void expectUsable(OVideoCaptureMacX& driver) {
        start(driver, "camera", 16, 8);
        camera->deliver(42);
        const std::vector<unsigned char> bytes = poll(driver);
        EXPECT_EQ(bytes.size(), 16u * 8 * 4);
        EXPECT_EQ(numberIn(bytes), 42);
        driver.stopVideoCapture();
        EXPECT_FALSE(camera->isRunning());
    }

    const std::shared_ptr<support::ScriptedCamera> camera;
};

} // namespace

TEST_F(DriverSizes, ProductThatWrapsToNothingIsAnEmptyFrame) {
    OVideoCaptureMacX driver;
    start(driver, "camera", 65536, 16384); // 2^32 bytes
    camera->deliver(1);
    EXPECT_EQ(driver.width(), 65536);
    EXPECT_EQ(driver.height(), 16384);
    EXPECT_TRUE(poll(driver).empty());
    VideoFrame frame = marked();
    driver.selfVideoFrame(frame);
    EXPECT_EQ(frame.width, 65536);
    EXPECT_EQ(frame.height, 16384);
    EXPECT_EQ(frame.formatId, 4);
    EXPECT_TRUE(frame.data.empty());
    expectUsable(driver);
}

TEST_F(DriverSizes, ProductThatWrapsToALittleNeverWritesBeyondIt) {
    OVideoCaptureMacX driver;
    start(driver, "camera", 65536, 16385); // 2^32 + 2^18 bytes wrap to 2^18
    camera->deliver(1);
    VideoFrame frame = marked();
    driver.selfVideoFrame(frame);
    EXPECT_TRUE(untouched(frame));
    EXPECT_TRUE(poll(driver).empty());
    expectUsable(driver);
}

TEST_F(DriverSizes, ProductThatWrapsToANegativeNumberIsMoreThanThereIs) {
    OVideoCaptureMacX driver;
    EXPECT_THROW(driver.startCapture("camera", 40000, 20000), std::bad_alloc); // 3.2e9 bytes
    EXPECT_EQ(driver.width(), 0);
    EXPECT_TRUE(driver.cameraUniqueId().isEmpty());
    EXPECT_FALSE(driver.isRunning());
    EXPECT_TRUE(poll(driver).empty());
    expectUsable(driver);
}

TEST_F(DriverSizes, NegativeSizesAreMoreThanThereIs) {
    OVideoCaptureMacX driver;
    const int sizes[][2] = {{-320, 240}, {320, -240}, {-1, 1}, {INT_MAX, INT_MAX - 2}, {INT_MIN + 1, 1}};
    for (const auto& size : sizes) {
        const bool negative =
            static_cast<int32_t>(static_cast<uint32_t>(size[0]) * 4u * static_cast<uint32_t>(size[1])) < 0;
        if (negative)
            EXPECT_THROW(driver.startCapture("camera", size[0], size[1]), std::bad_alloc);
        else
            start(driver, "camera", size[0], size[1]);
        EXPECT_TRUE(poll(driver).empty()) << size[0] << " x " << size[1];
    }
    expectUsable(driver);
}

TEST_F(DriverSizes, TwoNegativeSizesMakeAProductButNoPicture) {
    OVideoCaptureMacX driver;
    start(driver, "camera", -320, -240);
    camera->deliver(1);
    EXPECT_EQ(driver.width(), -320);
    EXPECT_TRUE(poll(driver).empty());
    EXPECT_TRUE(camera->sizesStarted().empty());
    expectUsable(driver);
}

TEST_F(DriverSizes, ZeroByZeroIsAnEmptyFrame) {
    OVideoCaptureMacX driver;
    start(driver, "camera", 0, 0);
    camera->deliver(1);
    EXPECT_TRUE(poll(driver).empty());
    VideoFrame frame = marked();
    driver.selfVideoFrame(frame);
    EXPECT_EQ(frame.width, 0);
    EXPECT_TRUE(frame.data.empty());
    const support::Lines lines = err.takeLines();
    EXPECT_NE(std::find_if(lines.begin(), lines.end(),
                           [](const std::string& line) {
                               return line.find("NSLog: Error adding output to capture session: ") == 0;
                           }),
              lines.end());
    expectUsable(driver);
}

TEST_F(DriverSizes, ExtremesNeverFault) {
    for (int width : {INT_MIN, INT_MIN / 2, -65536, 0, 1, 65536, INT_MAX / 2, INT_MAX})
        for (int height : {INT_MIN, -1, 0, 1, 16384, INT_MAX}) {
            OVideoCaptureMacX driver;
            try {
                start(driver, "camera", width, height);
            } catch (const std::bad_alloc&) {
                EXPECT_EQ(driver.width(), 0);
            }
            camera->deliver(1);
            const bool possible = width == 1 && (height == 1 || height == 16384);
            EXPECT_EQ(!poll(driver).empty(), possible) << width << " x " << height;
        }
    EXPECT_FALSE(camera->isOpen());
}

TEST_F(DriverSizes, OddAndSinglePixelFramesAreExact) {
    for (const auto& size : {std::pair<int, int>{1, 1}, {3, 5}, {1, 7}, {639, 479}}) {
        const auto driver = started("camera", size.first, size.second);
        camera->deliver(11);
        const std::vector<unsigned char> bytes = poll(*driver);
        EXPECT_EQ(bytes.size(), static_cast<std::size_t>(size.first * size.second * 4));
        EXPECT_EQ(numberIn(bytes), 11);
    }
}
