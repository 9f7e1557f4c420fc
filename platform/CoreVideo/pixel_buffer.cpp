#include "platform/CoreVideo/pixel_buffer.h"

#include "base/frame_memory.h"

#include <new>

namespace {

constexpr size_t BYTES_PER_PIXEL = 4;

// One block for one buffer.
class OwnMemory : public ostrel::PixelSource {
public:
    explicit OwnMemory(std::shared_ptr<uint8_t> memory) : memory_(std::move(memory)) {}
    std::shared_ptr<uint8_t> pixels() override { return memory_; }

private:
    std::shared_ptr<uint8_t> memory_;
};

CVReturn check(size_t width, size_t height, OSType format, const CVPixelBufferRef* out) {
    if (!out)
        return kCVReturnInvalidArgument;
    if (format != kCVPixelFormatType_32BGRA)
        return kCVReturnInvalidPixelFormat;
    if (width == 0 || height == 0 || width > SIZE_MAX / BYTES_PER_PIXEL ||
        height > SIZE_MAX / (width * BYTES_PER_PIXEL))
        return kCVReturnInvalidSize;
    return kCVReturnSuccess;
}

CVReturn make(size_t width, size_t height, size_t bytesPerRow, const std::shared_ptr<uint8_t>& memory,
              CVPixelBufferRef* out) {
    std::unique_ptr<ostrel::PixelSource> source(new OwnMemory(memory));
    *out = new __CVBuffer(width, height, bytesPerRow, std::move(source));
    return kCVReturnSuccess;
}

} // namespace

uint8_t* __CVBuffer::lock() {
    ++locks_;
    countReaders(1); // before the picture is made, which takes the longest
    std::lock_guard<std::mutex> guard(mutex_);
    if (source_) {
        memory_ = source_->pixels();
        base.store(memory_.get(), std::memory_order_release);
        source_.reset();
    }
    return memory_.get();
}

// More often than it was locked it does nothing.
void __CVBuffer::unlock() {
    int held = locks_.load();
    while (held > 0 && !locks_.compare_exchange_weak(held, held - 1)) {
    }
    if (held > 0)
        countReaders(-1);
}

CVBufferRef CVBufferRetain(CVBufferRef buffer) {
    if (buffer)
        buffer->references.fetch_add(1, std::memory_order_relaxed);
    return buffer;
}

void CVBufferRelease(CVBufferRef buffer) {
    if (buffer && buffer->references.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete buffer;
}

CVReturn CVPixelBufferCreate(CFAllocatorRef, size_t width, size_t height, OSType pixelFormatType,
                             CFDictionaryRef, CVPixelBufferRef* pixelBufferOut) {
    const CVReturn checked = check(width, height, pixelFormatType, pixelBufferOut);
    if (checked != kCVReturnSuccess)
        return checked;
    try {
        const size_t bytesPerRow = width * BYTES_PER_PIXEL;
        const auto memory = std::make_shared<ostrel::FrameMemory>(bytesPerRow * height);
        return make(width, height, bytesPerRow, std::shared_ptr<uint8_t>(memory, memory->data()),
                    pixelBufferOut);
    } catch (const std::bad_alloc&) {
        return kCVReturnAllocationFailed;
    }
}

CVReturn CVPixelBufferCreateWithBytes(CFAllocatorRef, size_t width, size_t height, OSType pixelFormatType,
                                      void* baseAddress, size_t bytesPerRow,
                                      CVPixelBufferReleaseBytesCallback releaseCallback, void* releaseRefCon,
                                      CFDictionaryRef, CVPixelBufferRef* pixelBufferOut) {
    const CVReturn checked = check(width, height, pixelFormatType, pixelBufferOut);
    if (checked != kCVReturnSuccess)
        return checked;
    if (!baseAddress || bytesPerRow < width * BYTES_PER_PIXEL)
        return kCVReturnInvalidArgument;
    try {
        // The caller's callback must not be called for a buffer that was never made, so it is switched on
        // last.
        const auto armed = std::make_shared<bool>(false);
        const std::shared_ptr<uint8_t> memory(static_cast<uint8_t*>(baseAddress),
                                              [armed, releaseCallback, releaseRefCon](uint8_t* bytes) {
                                                  if (*armed && releaseCallback)
                                                      releaseCallback(releaseRefCon, bytes);
                                              });
        const CVReturn made = make(width, height, bytesPerRow, memory, pixelBufferOut);
        *armed = true;
        return made;
    } catch (const std::bad_alloc&) {
        return kCVReturnAllocationFailed;
    }
}

CVReturn CVPixelBufferLockBaseAddress(CVPixelBufferRef pixelBuffer, CVOptionFlags) {
    if (!pixelBuffer)
        return kCVReturnInvalidArgument;
    return pixelBuffer->lock() ? kCVReturnSuccess : kCVReturnError;
}

CVReturn CVPixelBufferUnlockBaseAddress(CVPixelBufferRef pixelBuffer, CVOptionFlags) {
    if (!pixelBuffer)
        return kCVReturnInvalidArgument;
    pixelBuffer->unlock();
    return kCVReturnSuccess;
}

void* CVPixelBufferGetBaseAddress(CVPixelBufferRef pixelBuffer) {
    return pixelBuffer ? pixelBuffer->base.load(std::memory_order_acquire) : nullptr;
}

size_t CVPixelBufferGetBytesPerRow(CVPixelBufferRef pixelBuffer) {
    return pixelBuffer ? pixelBuffer->bytesPerRow : 0;
}

size_t CVPixelBufferGetWidth(CVPixelBufferRef pixelBuffer) {
    return pixelBuffer ? pixelBuffer->width : 0;
}

size_t CVPixelBufferGetHeight(CVPixelBufferRef pixelBuffer) {
    return pixelBuffer ? pixelBuffer->height : 0;
}

OSType CVPixelBufferGetPixelFormatType(CVPixelBufferRef pixelBuffer) {
    return pixelBuffer ? static_cast<OSType>(kCVPixelFormatType_32BGRA) : 0;
}
