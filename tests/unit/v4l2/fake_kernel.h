// A kernel with cameras of the test's making. It fails as the real one does, with -1 and errno, and notes
// every misuse that the real one would answer with a crash or with nothing.
#ifndef OSTREL_TESTS_UNIT_V4L2_FAKE_KERNEL_H
#define OSTREL_TESTS_UNIT_V4L2_FAKE_KERNEL_H

#include "platform/cameras/v4l2/format_choice.h"
#include "platform/cameras/v4l2/kernel_calls.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <linux/videodev2.h>
#include <map>
#include <mutex>
#include <string>
#include <sys/time.h>
#include <vector>

namespace ostrel {
namespace tests {

struct FakeFormat {
    uint32_t fourcc = 0;
    std::vector<cameras::v4l2::SizeRange> sizes;    // none: the driver does not list them
    std::vector<cameras::v4l2::Interval> intervals; // the same for all sizes; none: not listed
};

// Sizes as drivers list them.
cameras::v4l2::SizeRange only(int width, int height);
cameras::v4l2::SizeRange stepwise(int least, int most, int step);
cameras::v4l2::Interval perSecond(uint32_t frames);

// What a driver is. Changed only before the camera is opened, unless a call of FakeKernel changes it.
struct FakeDevice {
    std::string card = "Fake Camera";
    std::string driver = "fake";
    std::string busInfo = "usb-0000:00:14.0-1";
    uint32_t capabilities = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
    bool hasDeviceCaps = true;
    uint32_t wholeDevice = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING;
    std::vector<FakeFormat> formats;
    std::function<void(v4l2_pix_format&)> adjust; // what S_FMT grants instead
    uint32_t padding = 0;                         // bytes at the end of each row
    unsigned mostBuffers = 32;
    unsigned planes = 1; // of the multiplanar interface
    uint32_t dataOffset = 0;
    bool knowsRates = true;
    int unpluggedDequeue = ENODEV; // what DQBUF says once the device is gone
};

// One frame that the driver makes.
struct FakeFrame {
    std::vector<uint8_t> bytes;
    uint32_t flags = 0;
    int sequence = -1;  // -1: the next
    int bytesUsed = -1; // -1: all
    int index = -1;     // -1: the buffer's own; else what DQBUF claims
    timeval time = {};  // what DQBUF says; the flags tell of which clock
};

// Names of the calls that are no ioctl, for failNext().
const unsigned long kOpen = 1, kMmap = 2, kPoll = 3, kMunmap = 4, kClose = 5;

class FakeKernel : public cameras::v4l2::KernelCalls {
public:
    ~FakeKernel() override;

    void plug(const std::string& path, const FakeDevice& device);
    void unplug(const std::string& path);

    // The next calls of this kind answer with the errno, once the first `after` of them went well.
    void failNext(unsigned long call, int number, int times = 1, int after = 0);
    // poll() answers with these events, until the device is replaced.
    void setPollEvents(const std::string& path, short events);

    // False when the driver has no free buffer: the frame is lost, as with real hardware.
    bool feed(const std::string& path, const FakeFrame& frame);
    // Waits until somebody polls an empty queue, that is, until everything that was fed has been handled.
    bool waitUntilIdle(const std::string& path);

    v4l2_format format(const std::string& path);
    cameras::v4l2::Interval interval(const std::string& path);
    unsigned queued(const std::string& path);
    unsigned buffers(const std::string& path);
    bool isStreaming(const std::string& path);
    int openDescriptors();
    int mappings();
    int calls(unsigned long call);
    std::vector<std::string> misuse();
    std::vector<std::string> journal(); // "open", "REQBUFS 5", "STREAMON", ... without the questions

protected:
    int doOpen(const char* path, int flags) override;
    int doClose(int descriptor) override;
    int doIoctl(int descriptor, unsigned long request, void* argument) override;
    void* doMmap(size_t length, int descriptor, long offset) override;
    int doMunmap(void* address, size_t length) override;
    int doPoll(pollfd* descriptors, unsigned long count, int milliseconds) override;

private:
    struct Buffer {
        uint8_t* memory = nullptr; // where the client has mapped it
        bool queued = false;
        FakeFrame frame;
    };
    struct Camera {
        FakeDevice device;
        bool gone = false;
        bool streaming = false;
        v4l2_format format = {};
        cameras::v4l2::Interval interval;
        std::vector<Buffer> buffers;
        std::deque<unsigned> waiting; // queued, empty
        std::deque<unsigned> done;    // queued, full
        int owner = -1;               // the descriptor that has the buffers
        uint32_t sequence = 0;
        short events = 0;
        bool excused = false; // it refused to take its buffers back, so nobody can do it right
        std::vector<int> descriptors;
    };
    struct Mapping {
        Camera* camera;
        unsigned index;
        size_t length;
    };

    bool failing(unsigned long call);
    void wake(Camera& camera);
    void settle(Camera& camera);
    int answer(Camera& camera, int descriptor, unsigned long request, void* argument);
    int queryCapabilities(Camera& camera, v4l2_capability& caps);
    int listFormats(Camera& camera, v4l2_fmtdesc& entry);
    int listSizes(Camera& camera, v4l2_frmsizeenum& entry);
    int listIntervals(Camera& camera, v4l2_frmivalenum& entry);
    int setFormat(Camera& camera, v4l2_format& format);
    int parameters(Camera& camera, v4l2_streamparm& parameters, bool set);
    int requestBuffers(Camera& camera, int descriptor, v4l2_requestbuffers& request);
    int queryBuffer(Camera& camera, v4l2_buffer& buffer);
    int queue(Camera& camera, v4l2_buffer& buffer);
    int dequeue(Camera& camera, v4l2_buffer& buffer);
    int switchStream(Camera& camera, bool on);
    void note(const std::string& line) { journal_.push_back(line); }
    Camera& at(const std::string& path);

    std::mutex mutex_;
    std::condition_variable idle_;
    std::map<std::string, std::unique_ptr<Camera>> cameras_;
    std::vector<std::unique_ptr<Camera>> unplugged_;
    std::map<int, Camera*> open_;
    std::map<void*, Mapping> mappings_;
    struct Failure {
        int number;
        int times;
        int after;
    };
    std::map<unsigned long, std::deque<Failure>> failures_;
    std::map<unsigned long, int> calls_;
    std::map<Camera*, int> idlePolls_;
    std::vector<std::string> misuse_;
    std::vector<std::string> journal_;
};

} // namespace tests
} // namespace ostrel

#endif
