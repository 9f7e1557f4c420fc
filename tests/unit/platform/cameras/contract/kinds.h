// The kinds of camera that the contract of cameras/camera.h is tested with.
#ifndef OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_CONTRACT_KINDS_H
#define OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_CONTRACT_KINDS_H

#include "platform/cameras/streaming_camera.h"
#include "support/recording_sink.h"

#include <gtest/gtest.h>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace ostrel::tests {

// One machine with one camera. Its frames come by themselves, about a thousand a second, while it streams.
class Kind {
public:
    virtual ~Kind() = default;

    // Plugs it in, again after unplug(): a new object, which stands for it until then.
    virtual std::shared_ptr<cameras::Camera> plug() = 0;
    // Returns when the hardware has left; the camera may learn of it a little later.
    virtual void unplug() = 0;
    // Whether the hardware captures at this moment.
    virtual bool streams() = 0;
    // Has the running stream end for a reason that the camera survives. False where this kind knows none.
    virtual bool breakDown() { return false; }
    // What was left behind or done against the rules of the hardware; after close().
    virtual std::string leftBehind() { return std::string(); }
};

struct KindOfCamera {
    const char* name;
    std::unique_ptr<Kind> (*make)();
};
inline void PrintTo(const KindOfCamera& kind, std::ostream* out) {
    *out << kind.name;
}

// Told when a call of the scripted kernel begins (true) and ends, on the thread that makes it; may be null.
inline void (*g_kernelCall)(bool begins) = nullptr;

// All of them.
std::vector<KindOfCamera> kindsOfCameras();

// A plugged and opened camera.
class Contract : public testing::TestWithParam<KindOfCamera> {
protected:
    static constexpr int WIDTH = 64, HEIGHT = 48;

    const std::unique_ptr<Kind> kind = GetParam().make();
    std::shared_ptr<cameras::Camera> camera = kind->plug();
    std::shared_ptr<support::RecordingSink> sink = std::make_shared<support::RecordingSink>();

    void SetUp() override { ASSERT_EQ(camera->open().text, ""); }
    void TearDown() override {
        camera->close();
        sink->drop();
        EXPECT_EQ(kind->leftBehind(), "");
    }
    cameras::Error start(const std::shared_ptr<cameras::FrameSink>& one) {
        return camera->start(WIDTH, HEIGHT, one);
    }
    static bool converts(const std::shared_ptr<cameras::CameraFrame>& frame) {
        std::vector<uint8_t> bgra(WIDTH * HEIGHT * 4);
        return frame && frame->convert(bgra.data(), WIDTH, HEIGHT, WIDTH * 4);
    }
    // Whether it comes to stream, or to stop, in the end.
    bool becomesStreaming(bool expected) const;
};

#define OSTREL_FOR_EACH_KIND(Suite)                                                                          \
    INSTANTIATE_TEST_SUITE_P(Kinds, Suite, testing::ValuesIn(kindsOfCameras()),                              \
                             [](const auto& suite) { return std::string(suite.param.name); })

} // namespace ostrel::tests

#endif
