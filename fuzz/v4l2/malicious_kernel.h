// A kernel with drivers that lie. The bytes of a fuzzer's input decide, call by call, whether the scripted
// driver's answer is passed on, an error or has some of its fields overwritten. What it hands out it checks
// on its way back.
#ifndef OSTREL_FUZZ_V4L2_MALICIOUS_KERNEL_H
#define OSTREL_FUZZ_V4L2_MALICIOUS_KERNEL_H

#include "fuzz/support/fenced_buffer.h"
#include "fuzz/support/input.h"

#include "support/v4l2/scripted_kernel.h"

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace fuzz {

// Thread-safe. Once the script is used up every answer is honest.
class MaliciousKernel : public ostrel::support::ScriptedKernel {
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
    void lieAboutControls(v4l2_ext_controls& all);
    void lieAboutBuffer(v4l2_buffer& buffer);
    void fillBuffers(int descriptor);

    std::mutex mutex_;
    std::condition_variable idleChanged_;
    Input script_;
    const Input contents_;
    std::map<int, std::string> paths_; // by descriptor
    std::map<void*, std::unique_ptr<FencedBuffer>> mappings_;
    int pollsLeft_ = 0;
    bool idle_ = false;
};

} // namespace fuzz

#endif
