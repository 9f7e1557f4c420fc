// A camera that sends JPEG, by a driver whose frames and times are the test's, and commands that run beside
// it.
#ifndef OSTREL_TESTS_UNIT_APPS_CAMERA_JPEG_CAMERA_H
#define OSTREL_TESTS_UNIT_APPS_CAMERA_JPEG_CAMERA_H

#include "program.h"

#include "apps/camera/commands.h"
#include "apps/common/failure.h"
#include "platform/cameras/v4l2/v4l2_provider.h"
#include "support/camera_test.h"
#include "support/jpeg_pictures.h"
#include "support/v4l2/scripted_discovery.h"
#include "support/v4l2/scripted_kernel.h"

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace ostrel::tests {

// A picture of its own for each number: without the tables, as most cameras send it.
inline std::vector<uint8_t> numbered(int number, int width = 64, int height = 48) {
    support::JpegOptions options;
    options.tables = false;
    return support::encodeJpeg(width, height, options, [&](int x, int y) {
        return std::array<uint8_t, 3>{uint8_t(x * 4), uint8_t(y * 4), uint8_t(number * 7)};
    });
}

class JpegCameraTest : public support::CameraTest {
protected:
    JpegCameraTest() {
        device.timestamps = V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC;
        options.quiet = true;
        options.captureSize = apps::Size{64, 48};
        options.camera.timeout = static_cast<double>(support::HANG.count());
    }

    void plug(int width, int height) {
        device.formats = {support::raw(V4L2_PIX_FMT_MJPEG, {support::only(width, height)})};
        kernel->plug(path, device);
        discovery->add(path);
        machine.has(cameras::v4l2::makeProvider(kernel, discovery));
    }

    void feed(const std::vector<uint8_t>& jpeg, int64_t microseconds, int sequence = -1) {
        support::FrameScript frame;
        frame.bytes = jpeg;
        frame.sequence = sequence;
        frame.time.tv_sec = microseconds / 1000000;
        frame.time.tv_usec = microseconds % 1000000;
        EXPECT_TRUE(kernel->feed(path, frame));
    }

    using Command = int (*)(const apps::cli::Options&, const apps::cli::Context&);

    // Runs it beside the camera, and answers what it says.
    std::string run(Command command, const std::function<void()>& camera) {
        std::string said;
        std::thread driver([&] {
            // A frame that comes before the session runs is nobody's.
            EXPECT_TRUE(support::comesTrue([&] {
                said += whatIsNew();
                return said.find(">>> session stopped") != std::string::npos; // which means that it runs
            }));
            camera();
        });
        apps::cli::Messages messages;
        messages.setQuiet(options.quiet);
        const apps::cli::StopRequest stop;
        int code = -1;
        try {
            code = command(options, {messages, stop});
        } catch (const apps::Failure& failure) {
            ADD_FAILURE() << failure.what();
        }
        driver.join();
        EXPECT_EQ(code, 0);
        return said + whatIsNew();
    }

    const std::string path = "/dev/video0";
    std::shared_ptr<support::ScriptedKernel> kernel = std::make_shared<support::ScriptedKernel>();
    std::shared_ptr<support::ScriptedDiscovery> discovery = std::make_shared<support::ScriptedDiscovery>();
    support::DeviceScript device;
    apps::cli::Options options;
    Folder folder;

private:
    std::string whatIsNew() {
        std::string text;
        for (const std::string& line : err.takeLines())
            text += line + "\n";
        return text;
    }
};

} // namespace ostrel::tests

#endif
