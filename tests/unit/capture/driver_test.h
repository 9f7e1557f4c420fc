// The fixture of tests that capture by the driver.
#ifndef OSTREL_TESTS_UNIT_CAPTURE_DRIVER_TEST_H
#define OSTREL_TESTS_UNIT_CAPTURE_DRIVER_TEST_H

#include <ostrel/capture.h>

#include "support/camera_test.h"

#include <memory>

namespace ostrel::support {

class DriverTest : public CameraTest {
protected:
    // A driver whose start-up is over.
    static std::unique_ptr<OVideoCaptureMacX> started(const char* identifier, int width, int height) {
        auto driver = std::make_unique<OVideoCaptureMacX>();
        start(*driver, identifier, width, height);
        return driver;
    }

    static void start(OVideoCaptureMacX& driver, const char* identifier, int width, int height) {
        driver.startCapture(identifier, width, height);
        driver.wait();
    }

    static std::vector<unsigned char> poll(OVideoCaptureMacX& driver) {
        std::vector<unsigned char> bytes;
        driver.videoFrame(bytes);
        return bytes;
    }

    // A record that shows whether it was touched.
    static VideoFrame marked() {
        VideoFrame frame;
        frame.formatId = 77;
        frame.frameNumber = 78;
        frame.width = 79;
        frame.height = 80;
        frame.timestamp = 81;
        frame.data = {1, 2, 3};
        return frame;
    }
    static bool untouched(const VideoFrame& frame) {
        return frame.formatId == 77 && frame.frameNumber == 78 && frame.width == 79 && frame.height == 80 &&
               frame.timestamp == 81 && frame.data == std::vector<uint8_t>{1, 2, 3};
    }

    // The lines that belong to one driver's life.
    static std::string constructed(const void* driver) {
        return withAddress("OVideoCaptureMacX::OVideoCaptureMacX() ", driver);
    }
    static std::string destroyed(const void* driver) {
        return withAddress("OVideoCaptureMacX::~OVideoCaptureMacX() ", driver);
    }
    static std::string run(const void* driver) {
        return withAddress(">>> OVideoCaptureMacX::run() ", driver);
    }
    static std::string stopping(const void* driver) {
        return withAddress("stopping for OVideoCaptureMacX ", driver);
    }
    static std::string stopping1(const void* driver) {
        return withAddress("stopping for OVideoCaptureMacX1 ", driver);
    }
    static Lines startUp() { return {">>> starting session", ">>> session stopped"}; }
    static Lines tearDown() { return {"stopping session", "closing camera", "removing input-output"}; }

    static Lines joined(std::initializer_list<Lines> parts) {
        Lines all;
        for (const Lines& part : parts)
            all.insert(all.end(), part.begin(), part.end());
        return all;
    }
};

} // namespace ostrel::support

#endif
