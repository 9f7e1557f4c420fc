// That the scripted driver answers as real ones do, seen by a client that is not the library.
#include "support/v4l2/scripted_discovery.h"
#include "support/v4l2/scripted_kernel.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <thread>

namespace ostrel::tests {

using namespace support;

namespace {

const char* const PATH = "/dev/video0";

// One descriptor and the buffers that it has.
class Client {
public:
    explicit Client(ScriptedKernel& kernel, const std::string& path = PATH,
                    uint32_t type = V4L2_BUF_TYPE_VIDEO_CAPTURE)
        : kernel_(kernel), type_(type), descriptor_(kernel.open(path.c_str(), O_RDWR | O_NONBLOCK)) {}
    ~Client() {
        stop();
        kernel_.close(descriptor_);
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    template <typename T>
    int call(unsigned long request, T& argument) { // 0 or errno
        return kernel_.ioctl(descriptor_, request, &argument) == -1 ? errno : 0;
    }
    int request(uint32_t count) {
        v4l2_requestbuffers request = {};
        request.type = type_;
        request.memory = V4L2_MEMORY_MMAP;
        request.count = count;
        return call(VIDIOC_REQBUFS, request);
    }
    v4l2_buffer buffer(uint32_t index) {
        v4l2_buffer result = {};
        result.type = type_;
        result.memory = V4L2_MEMORY_MMAP;
        result.index = index;
        if (type_ == V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE) {
            result.m.planes = planes;
            result.length = VIDEO_MAX_PLANES;
        }
        return result;
    }
    int queue(uint32_t index) {
        v4l2_buffer one = buffer(index);
        return call(VIDIOC_QBUF, one);
    }
    int dequeue(v4l2_buffer& full) {
        full = buffer(0);
        return call(VIDIOC_DQBUF, full);
    }
    int switchOn() { return call(VIDIOC_STREAMON, type_); }
    int start(uint32_t count = 2) {
        int error = request(count);
        for (uint32_t i = 0; i < count && !error; ++i)
            error = queue(i);
        return error ? error : switchOn();
    }
    int stop() {
        const int error = call(VIDIOC_STREAMOFF, type_);
        request(0);
        return error;
    }
    bool waitForFrame() {
        pollfd ready = {descriptor_, POLLIN, 0};
        return kernel_.poll(&ready, 1, 20000) == 1 && (ready.revents & POLLIN);
    }
    uint8_t* map(const v4l2_plane& plane) {
        return static_cast<uint8_t*>(kernel_.mmap(plane.length, descriptor_, plane.m.mem_offset));
    }

    v4l2_plane planes[VIDEO_MAX_PLANES] = {};

private:
    ScriptedKernel& kernel_;
    uint32_t type_;
    const int descriptor_;
};

FrameScript frameOf(std::vector<uint8_t> bytes) {
    FrameScript frame;
    frame.bytes = std::move(bytes);
    return frame;
}

class ScriptedDriverTest : public testing::Test {
protected:
    ScriptedKernel kernel;
    DeviceScript device;

    ScriptedDriverTest() { device.formats = {raw(V4L2_PIX_FMT_GREY, {only(64, 48), only(32, 24)})}; }
    v4l2_format asked(int width, int height) const {
        v4l2_format format = {};
        format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        format.fmt.pix.pixelformat = V4L2_PIX_FMT_GREY;
        format.fmt.pix.width = static_cast<uint32_t>(width);
        format.fmt.pix.height = static_cast<uint32_t>(height);
        return format;
    }
};

} // namespace

TEST_F(ScriptedDriverTest, FramesGoThroughTheQueueInOrderWithTheirNumbers) {
    device.timestamps = V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC;
    kernel.plug(PATH, device);
    Client client(kernel);
    ASSERT_EQ(client.start(2), 0);
    v4l2_buffer full;
    EXPECT_EQ(client.dequeue(full), EAGAIN);
    const int64_t before = monotonicNow();
    EXPECT_TRUE(kernel.feed(PATH, frameOf({1})));
    EXPECT_TRUE(kernel.feed(PATH, frameOf({2, 2})));
    EXPECT_FALSE(kernel.feed(PATH, frameOf({3}))); // no buffer: lost, but numbered
    EXPECT_EQ(kernel.lost(PATH), 1u);
    ASSERT_TRUE(client.waitForFrame());
    ASSERT_EQ(client.dequeue(full), 0);
    EXPECT_EQ(full.index, 0u);
    EXPECT_EQ(full.sequence, 0u);
    EXPECT_EQ(full.bytesused, 1u);
    EXPECT_GE(full.timestamp.tv_sec, before / 1000000000);
    ASSERT_EQ(client.queue(full.index), 0);
    EXPECT_TRUE(kernel.feed(PATH, frameOf({4})));
    ASSERT_EQ(client.dequeue(full), 0);
    EXPECT_EQ(full.sequence, 1u);
    ASSERT_EQ(client.dequeue(full), 0);
    EXPECT_EQ(full.sequence, 3u);
    EXPECT_EQ(kernel.queued(PATH), 0u);
}

TEST_F(ScriptedDriverTest, CallsFailByNameTurnAndNode) {
    kernel.plug(PATH, device);
    kernel.plug("/dev/video1", device);
    CallRule rule;
    rule.call = VIDIOC_TRY_FMT;
    rule.path = PATH;
    rule.error = EIO;
    rule.after = 1;
    rule.times = 2;
    kernel.script().add(rule);
    Client first(kernel), second(kernel, "/dev/video1");
    v4l2_format format = asked(32, 24);
    std::vector<int> answers, others;
    for (int i = 0; i < 4; ++i) {
        answers.push_back(first.call(VIDIOC_TRY_FMT, format));
        others.push_back(second.call(VIDIOC_TRY_FMT, format));
    }
    EXPECT_EQ(answers, (std::vector<int>{0, EIO, EIO, 0}));
    EXPECT_EQ(others, (std::vector<int>{0, 0, 0, 0}));
    EXPECT_EQ(kernel.calls(PATH, VIDIOC_TRY_FMT), 4);
    EXPECT_EQ(kernel.calls(VIDIOC_TRY_FMT), 8);
    EXPECT_EQ(kernel.callsOn(PATH), 5);        // and open()
    EXPECT_EQ(kernel.format(PATH).width, 64u); // tried, not set
}

TEST_F(ScriptedDriverTest, ACallThatIsHeldHoldsTheOthersOfItsNodeAlone) {
    kernel.plug(PATH, device);
    kernel.plug("/dev/video1", device);
    Client held(kernel), other(kernel, "/dev/video1");
    const auto gate = kernel.hold(PATH, VIDIOC_STREAMON);
    std::thread starter([&] { EXPECT_EQ(held.start(), 0); });
    gate->awaitArrivals(1);
    v4l2_capability caps = {};
    std::atomic<bool> answered{false};
    std::thread asker([&] {
        EXPECT_EQ(held.call(VIDIOC_QUERYCAP, caps), 0);
        EXPECT_TRUE(kernel.isStreaming(PATH)); // it came after the held call
        answered = true;
    });
    v4l2_capability elsewhere = {};
    EXPECT_EQ(other.call(VIDIOC_QUERYCAP, elsewhere), 0);
    EXPECT_FALSE(answered);
    EXPECT_FALSE(kernel.isStreaming(PATH));
    gate->open();
    starter.join();
    asker.join();
}

TEST_F(ScriptedDriverTest, ADriverWithoutTheOneLockAnswersMeanwhile) {
    device.oneCallAtATime = false;
    kernel.plug(PATH, device);
    Client client(kernel);
    const auto gate = kernel.hold(PATH, VIDIOC_STREAMON);
    std::thread starter([&] { EXPECT_EQ(client.start(), 0); });
    gate->awaitArrivals(1);
    v4l2_capability caps = {};
    EXPECT_EQ(client.call(VIDIOC_QUERYCAP, caps), 0);
    gate->open();
    starter.join();
}

TEST_F(ScriptedDriverTest, EveryKindOfCallCanTakeLong) {
    const auto time = std::chrono::milliseconds(20);
    kernel.plug(PATH, device);
    const auto takes = [&](unsigned long call) {
        kernel.delay(PATH, call, time);
        const auto before = std::chrono::steady_clock::now();
        Client client(kernel);
        client.start();
        v4l2_buffer query = client.buffer(0), full;
        client.call(VIDIOC_QUERYBUF, query);
        void* const address = kernel.mmap(query.length, 0, 0); // of no node: not delayed
        EXPECT_EQ(address, MAP_FAILED);
        client.dequeue(full);
        client.stop();
        return std::chrono::steady_clock::now() - before;
    };
    int calls = 0;
    for (const unsigned long call :
         {OPEN, static_cast<unsigned long>(VIDIOC_REQBUFS), static_cast<unsigned long>(VIDIOC_STREAMON),
          static_cast<unsigned long>(VIDIOC_DQBUF), static_cast<unsigned long>(VIDIOC_STREAMOFF)})
        EXPECT_GE(takes(call), ++calls * time) << calls;
}

TEST_F(ScriptedDriverTest, StreamonIsRefusedWhereTheBusIsTooNarrow) {
    device.bandwidth = [](const v4l2_pix_format& pix) { return pix.width <= 32; };
    kernel.plug(PATH, device);
    Client client(kernel);
    EXPECT_EQ(client.start(), ENOSPC);
    client.stop();
    v4l2_format smaller = asked(32, 24);
    ASSERT_EQ(client.call(VIDIOC_S_FMT, smaller), 0);
    EXPECT_EQ(smaller.fmt.pix.sizeimage, 32u * 24u);
    EXPECT_EQ(client.start(), 0);
}

TEST_F(ScriptedDriverTest, AStalledStreamComesBackByStartingAnew) {
    kernel.plug(PATH, device);
    Client client(kernel);
    ASSERT_EQ(client.start(), 0);
    ASSERT_TRUE(kernel.feed(PATH, frameOf({1})));
    kernel.stall(PATH);
    EXPECT_FALSE(kernel.feed(PATH, frameOf({2})));
    client.stop();
    ASSERT_EQ(client.start(), 0);
    EXPECT_TRUE(kernel.feed(PATH, frameOf({3})));
    v4l2_buffer full;
    ASSERT_EQ(client.dequeue(full), 0);
    EXPECT_EQ(full.sequence, 0u); // numbered anew
}

TEST_F(ScriptedDriverTest, ItLeavesInTheMiddleOfACall) {
    for (const unsigned long call : {VIDIOC_S_FMT, VIDIOC_REQBUFS, VIDIOC_QBUF, VIDIOC_STREAMON}) {
        kernel.plug(PATH, device);
        CallRule rule;
        rule.call = call;
        rule.before = [&] { kernel.unplug(PATH); };
        Client client(kernel);
        kernel.script().add(rule);
        v4l2_format format = asked(32, 24);
        const int error = client.call(VIDIOC_S_FMT, format);
        EXPECT_EQ(error ? error : client.start(), ENODEV);
        EXPECT_EQ(kernel.open(PATH, O_RDWR), -1);
        EXPECT_EQ(errno, ENOENT);
    }
    EXPECT_EQ(kernel.openDescriptors(), 0);
}

TEST_F(ScriptedDriverTest, FramesComeByThemselvesInTime) {
    device.period = 2000000;
    device.timestamps = V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC;
    device.picture = std::make_shared<std::vector<uint8_t>>(64 * 48, 7);
    kernel.plug(PATH, device);
    Client client(kernel);
    ASSERT_EQ(client.start(4), 0);
    uint32_t last = 0;
    for (int i = 0; i < 5; ++i) {
        v4l2_buffer full;
        do
            ASSERT_TRUE(client.waitForFrame());
        while (client.dequeue(full) == EAGAIN);
        EXPECT_EQ(full.bytesused, 64u * 48u);
        const int64_t stamp = full.timestamp.tv_sec * int64_t(1000000000) + full.timestamp.tv_usec * 1000;
        const int64_t arrival = kernel.arrival(PATH, full.sequence);
        EXPECT_EQ(stamp, arrival / 1000 * 1000);
        EXPECT_LE(arrival, monotonicNow());
        EXPECT_TRUE(i == 0 || full.sequence > last);
        last = full.sequence;
        ASSERT_EQ(client.queue(full.index), 0);
    }
}

TEST_F(ScriptedDriverTest, SeveralPlanesOfMemoryEachHoldTheirPartOfThePicture) {
    device.capabilities = V4L2_CAP_VIDEO_CAPTURE_MPLANE | V4L2_CAP_STREAMING;
    device.formats = {raw(V4L2_PIX_FMT_YUV420M, {only(64, 48)})};
    device.padding = 16;
    device.dataOffset = 8;
    kernel.plug(PATH, device);
    Client client(kernel, PATH, V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE);
    v4l2_format format = {};
    format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE;
    ASSERT_EQ(client.call(VIDIOC_G_FMT, format), 0);
    ASSERT_EQ(format.fmt.pix_mp.num_planes, 3);
    EXPECT_EQ(format.fmt.pix_mp.plane_fmt[0].bytesperline, 80u);
    EXPECT_EQ(format.fmt.pix_mp.plane_fmt[2].bytesperline, 40u);
    ASSERT_EQ(client.start(2), 0);
    v4l2_buffer query = client.buffer(0);
    ASSERT_EQ(client.call(VIDIOC_QUERYBUF, query), 0);
    ASSERT_EQ(query.length, 3u);
    uint8_t* mapped[3] = {};
    for (int plane = 0; plane < 3; ++plane)
        mapped[plane] = client.map(client.planes[plane]);
    std::vector<uint8_t> bytes(80 * 48, 1);
    bytes.resize(bytes.size() + 40 * 24, 2);
    bytes.resize(bytes.size() + 40 * 24, 3);
    ASSERT_TRUE(kernel.feed(PATH, frameOf(bytes)));
    v4l2_buffer full;
    ASSERT_EQ(client.dequeue(full), 0);
    for (int plane = 0; plane < 3; ++plane) {
        const uint32_t length = plane == 0 ? 80 * 48 : 40 * 24;
        EXPECT_EQ(client.planes[plane].data_offset, 8u);
        EXPECT_EQ(client.planes[plane].bytesused, length + 8) << plane;
        EXPECT_EQ(mapped[plane][8], plane + 1);
        EXPECT_EQ(mapped[plane][length + 7], plane + 1);
        kernel.munmap(mapped[plane], length + 8);
    }
    EXPECT_EQ(kernel.mappings(), 0);
}

TEST_F(ScriptedDriverTest, SizesAndRatesAreListedAsStepsOrRanges) {
    device.formats = {raw(V4L2_PIX_FMT_GREY, {stepwise(16, 256, 8)}),
                      raw(V4L2_PIX_FMT_YUYV, {stepwise(2, 9, 1)})};
    device.formats[0].intervalType = V4L2_FRMIVAL_TYPE_STEPWISE;
    device.formats[0].intervals = {perSecond(60), perSecond(5), perSecond(5)};
    kernel.plug(PATH, device);
    Client client(kernel);
    v4l2_frmsizeenum size = {};
    size.pixel_format = V4L2_PIX_FMT_GREY;
    ASSERT_EQ(client.call(VIDIOC_ENUM_FRAMESIZES, size), 0);
    EXPECT_EQ(size.type, static_cast<uint32_t>(V4L2_FRMSIZE_TYPE_STEPWISE));
    EXPECT_EQ(size.stepwise.step_width, 8u);
    size.pixel_format = V4L2_PIX_FMT_YUYV;
    ASSERT_EQ(client.call(VIDIOC_ENUM_FRAMESIZES, size), 0);
    EXPECT_EQ(size.type, static_cast<uint32_t>(V4L2_FRMSIZE_TYPE_CONTINUOUS));
    v4l2_frmivalenum interval = {};
    interval.pixel_format = V4L2_PIX_FMT_GREY;
    ASSERT_EQ(client.call(VIDIOC_ENUM_FRAMEINTERVALS, interval), 0);
    EXPECT_EQ(interval.stepwise.min.denominator, 60u);
    interval.index = 1;
    EXPECT_EQ(client.call(VIDIOC_ENUM_FRAMEINTERVALS, interval), EINVAL);
}

TEST_F(ScriptedDriverTest, TheBuffersBelongToOneDescriptorUntilItGivesThemBack) {
    kernel.plug(PATH, device);
    Client first(kernel), second(kernel);
    v4l2_format format = asked(32, 24);
    ASSERT_EQ(first.start(), 0);
    EXPECT_EQ(second.call(VIDIOC_S_FMT, format), EBUSY);
    EXPECT_EQ(second.start(), EBUSY);
    EXPECT_EQ(second.switchOn(), EBUSY);
    first.stop();
    EXPECT_EQ(second.start(), 0);
}

TEST_F(ScriptedDriverTest, MisuseAndLeaksAreSeen) {
    kernel.plug(PATH, device);
    const int descriptor = kernel.open(PATH, O_RDWR);
    {
        Client client(kernel);
        ASSERT_EQ(client.start(2), 0);
        EXPECT_EQ(client.queue(1), EINVAL);
    }
    EXPECT_EQ(kernel.misuse(), std::vector<std::string>{"queued a buffer that is not the client's"});
    EXPECT_EQ(kernel.openDescriptors(), 1);
    v4l2_requestbuffers request = {};
    request.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    request.memory = V4L2_MEMORY_MMAP;
    request.count = 1;
    kernel.ioctl(descriptor, VIDIOC_REQBUFS, &request);
    void* const address = kernel.mmap(64 * 48, descriptor, 0);
    EXPECT_EQ(kernel.mappings(), 1);
    kernel.close(descriptor);
    EXPECT_EQ(kernel.misuse().back(), "closed with buffers");
    kernel.munmap(address, 64 * 48);
    kernel.close(descriptor);
    EXPECT_EQ(kernel.misuse().back(), "close of a descriptor that is not open");
}

TEST(ScriptedDiscovery, GivesANodeAnotherGenerationEachTimeItAppears) {
    ScriptedDiscovery discovery;
    discovery.add(PATH);
    const std::string first = discovery.generation(PATH);
    EXPECT_NE(first, "");
    discovery.remove(PATH);
    EXPECT_TRUE(discovery.nodes().empty());
    EXPECT_EQ(discovery.generation(PATH), "");
    discovery.add(PATH);
    EXPECT_NE(discovery.generation(PATH), first);
    EXPECT_EQ(discovery.nodes().size(), 1u);
}

} // namespace ostrel::tests
