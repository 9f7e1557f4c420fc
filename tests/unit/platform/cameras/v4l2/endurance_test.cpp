// A thousand faults in random order against one camera object after the other: nothing hangs, nothing is left
// over, and the next healthy capture works.
#include "unit/platform/cameras/v4l2/camera_fixture.h"

#include <dirent.h>
#include <poll.h>
#include <random>

namespace ostrel::tests {

namespace {

int entriesOf(const char* directory) {
    int count = 0;
    DIR* handle = ::opendir(directory);
    while (handle && ::readdir(handle))
        ++count;
    if (handle)
        ::closedir(handle);
    return count;
}

class EnduranceTest : public V4l2CameraTest {
protected:
    std::mt19937 random;

    int upTo(int most) { return static_cast<int>(random() % static_cast<unsigned>(most + 1)); }

    // Any call with any errno, soon or later, once or for long.
    void scriptAFault() {
        static const unsigned long calls[] = {OPEN,
                                              MMAP,
                                              POLL,
                                              VIDIOC_QUERYCAP,
                                              VIDIOC_ENUM_FMT,
                                              VIDIOC_S_FMT,
                                              VIDIOC_G_PARM,
                                              VIDIOC_S_PARM,
                                              VIDIOC_REQBUFS,
                                              VIDIOC_QUERYBUF,
                                              VIDIOC_QBUF,
                                              VIDIOC_DQBUF,
                                              VIDIOC_STREAMON,
                                              VIDIOC_STREAMOFF};
        static const int numbers[] = {EINTR, EAGAIN, EIO,    ENODEV, EBUSY,  ENOSPC, EACCES,
                                      EPERM, EINVAL, ENOMEM, EPIPE,  EPROTO, ENOTTY};
        kernel->failNext(calls[random() % 14], numbers[random() % 13], upTo(9) ? 1 : 30, upTo(4));
    }
    void feedSomething() {
        FrameScript frame = grey(static_cast<uint8_t>(upTo(255)));
        switch (upTo(9)) {
        case 0:
            frame.flags = V4L2_BUF_FLAG_ERROR;
            break;
        case 1:
            frame.bytesUsed = upTo(64 * 48);
            break;
        case 2:
            frame.index =
                32 + upTo(100); // out of range: a wrong one within it cannot be told from a right one
            break;
        case 3:
            frame.sequence = upTo(1 << 30);
            break;
        default:
            break;
        }
        kernel->feed(path, frame);
    }
    void misbehave() {
        sink = std::make_shared<RecordingSink>();
        sink->keepAll = upTo(1);
        plug();
        scriptAFault();
        if (camera->open()) {
            camera->close();
            return;
        }
        const bool started = !camera->start(64, 48, sink);
        for (int i = upTo(8); i > 0; --i)
            feedSomething();
        if (upTo(3) == 0)
            kernel->setPollEvents(path, POLLERR);
        if (upTo(3) == 0)
            unplug();
        if (started && upTo(1))
            if (const auto frame = sink->newest())
                brightness(frame);
        camera->stop(sink);
        camera->close();
    }
    void expectAHealthyCapture() {
        kernel = std::make_shared<ScriptedKernel>();
        discovery = std::make_shared<ScriptedDiscovery>();
        sink = std::make_shared<RecordingSink>();
        start();
        deliver(123);
        EXPECT_EQ(brightness(sink->newest()), 123);
        camera->stop(sink);
        camera->close();
    }
};

} // namespace

TEST_F(EnduranceTest, SurvivesAThousandFaultsInRandomOrder) {
    const unsigned seed = std::random_device()();
    RecordProperty("seed", static_cast<int>(seed));
    std::cout << "seed " << seed << '\n';
    random.seed(seed);
    expectAHealthyCapture();
    const int descriptors = entriesOf("/proc/self/fd"), threads = entriesOf("/proc/self/task");
    for (int round = 0; round < 1000; ++round) {
        kernel = std::make_shared<ScriptedKernel>();
        discovery = std::make_shared<ScriptedDiscovery>();
        misbehave();
        ASSERT_EQ(kernel->openDescriptors(), 0) << "seed " << seed << " round " << round;
        ASSERT_EQ(kernel->mappings(), 0) << "seed " << seed << " round " << round;
        ASSERT_EQ(kernel->misuse(), std::vector<std::string>()) << "seed " << seed << " round " << round;
    }
    expectAHealthyCapture();
    EXPECT_EQ(entriesOf("/proc/self/fd"), descriptors);
    EXPECT_EQ(entriesOf("/proc/self/task"), threads);
}

} // namespace ostrel::tests
