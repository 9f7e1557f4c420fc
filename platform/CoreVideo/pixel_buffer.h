// What stands behind a CVPixelBufferRef.
#ifndef OSTREL_PLATFORM_COREVIDEO_PIXEL_BUFFER_H
#define OSTREL_PLATFORM_COREVIDEO_PIXEL_BUFFER_H

#include <CoreVideo/CoreVideo.h>

#include <atomic>
#include <memory>
#include <mutex>

namespace ostrel {

// Where the pixels of a buffer come from, once somebody wants them.
class PixelSource {
public:
    virtual ~PixelSource() = default;
    // The whole picture in rows of the buffer's bytesPerRow; null when it cannot be had. Called once.
    virtual std::shared_ptr<uint8_t> pixels() = 0;
};

// How many buffers of one origin are locked at the moment; the buffers may outlive who asks.
using Readers = std::shared_ptr<std::atomic<int>>;

} // namespace ostrel

// Reference counted; made with one reference.
struct __CVBuffer {
    __CVBuffer(size_t columns, size_t rows, size_t stride, std::unique_ptr<ostrel::PixelSource> picture,
               ostrel::Readers among = nullptr)
        : width(columns), height(rows), bytesPerRow(stride), source_(std::move(picture)),
          readers_(std::move(among)) {}
    ~__CVBuffer() { countReaders(-locks_.exchange(0)); }

    // The pixels: the first call asks the source and then lets go of it, so that what the source holds (a
    // camera's buffer) is free again while the picture is still in use.
    uint8_t* lock();
    void unlock();

    const size_t width;
    const size_t height;
    const size_t bytesPerRow;
    std::atomic<uint32_t> references{1};
    std::atomic<uint8_t*> base{nullptr};

private:
    void countReaders(int change) {
        if (readers_)
            readers_->fetch_add(change);
    }

    std::atomic<int> locks_{0};
    std::mutex mutex_; // of the two below
    std::unique_ptr<ostrel::PixelSource> source_;
    std::shared_ptr<uint8_t> memory_;
    const ostrel::Readers readers_;
};

#endif
