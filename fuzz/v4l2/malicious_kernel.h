// A kernel with a driver that lies. The bytes of a fuzzer's input decide, call by call, whether an answer is
// honest, an error or has some of its fields overwritten. What it hands out it checks on its way back.
#ifndef OSTREL_FUZZ_V4L2_MALICIOUS_KERNEL_H
#define OSTREL_FUZZ_V4L2_MALICIOUS_KERNEL_H

#include "fuzz/support/fenced_buffer.h"
#include "fuzz/support/input.h"

#include "platform/cameras/v4l2/kernel_calls.h"

#include <condition_variable>
#include <deque>
#include <linux/videodev2.h>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>

namespace fuzz {

// Thread-safe. Once the script is used up every answer is honest.
class MaliciousKernel : public ostrel::cameras::v4l2::KernelCalls {
public:
    // contents: what the driver's buffers hold.
    MaliciousKernel(const Input& script, const Input& contents);

    // For the client's own decisions, from the same script.
    uint8_t byte();
    int32_t number();
    std::string text();

    // Begins a stream's share of frames; after it, poll() waits for the stop.
    void beginStream();
    // Waits until the delivery thread has nothing left to do.
    void waitUntilIdle();
    // The delivery thread says that it ends by itself.
    void streamEnded();

    // That everything was given back.
    void checkNothingLeft();

protected:
    int doOpen(const char* path, int flags) override;
    int doClose(int descriptor) override;
    int doIoctl(int descriptor, unsigned long request, void* argument) override;
    void* doMmap(size_t length, int descriptor, long offset) override;
    int doMunmap(void* address, size_t length) override;
    int doPoll(pollfd* descriptors, unsigned long count, int milliseconds) override;

private:
    bool fails();
    void lie(void* answer, size_t bytes);
    void lieAboutBuffer(v4l2_buffer& buffer);
    int honest(unsigned long request, void* argument);
    int honestFormat(v4l2_format& format);
    int honestBuffer(unsigned long request, v4l2_buffer& buffer);

    std::mutex mutex_;
    std::condition_variable idleChanged_;
    Input script_;
    const Input contents_;
    const uint32_t fourcc_;
    const bool multiplanar_;
    std::set<int> descriptors_;
    std::map<void*, std::unique_ptr<FencedBuffer>> mappings_;
    std::deque<uint32_t> queued_;
    uint32_t width_ = 64, height_ = 48;
    uint32_t sequence_ = 0;
    int nextDescriptor_ = 100000; // no descriptor of the process
    int pollsLeft_ = 0;
    bool idle_ = false;
};

} // namespace fuzz

#endif
