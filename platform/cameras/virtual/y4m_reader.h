// Reads the Y4M format: one line of text about the stream, then for each frame a line of text and its planes.
// Knows neither files nor Qt, so that anything can be fed to it.
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_Y4M_READER_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_Y4M_READER_H

#include "platform/cameras/virtual/yuv_picture.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace ostrel {
namespace cameras {

// Where the bytes come from. Thread-safe where a reader is used by several threads.
class ByteSource {
public:
    virtual ~ByteSource() = default;
    // Reads up to `size` bytes from the offset on; fewer only at the end. Negative when that failed.
    virtual int64_t read(uint64_t offset, void* to, size_t size) const = 0;
    // The size in bytes, as it is now.
    virtual uint64_t size() const = 0;
};

struct Y4mFormat {
    YuvLayout layout; // 0 x 0 unless a header was read
    double framesPerSecond = 0;
};

// Re-entrant; all but open() may be called by several threads at the same time.
class Y4mReader {
public:
    enum class Found {
        Frame,
        End,   // also within a frame that is cut off
        Broken // no frame where one has to be
    };

    // Reads the header. Returns an empty text, or one line that says what is wrong. The source is kept.
    std::string open(const ByteSource& source);

    const Y4mFormat& format() const { return format_; }
    // Where the first frame begins.
    uint64_t firstFrame() const { return firstFrame_; }
    // The frame that begins at `position`: where its planes are. A frame makes `position` the next one's.
    Found next(uint64_t& position, uint64_t& planes) const;
    // Reads the planes, format().layout.bytes() bytes. False when they are no longer there.
    bool readPlanes(uint64_t planes, uint8_t* to) const;

private:
    const ByteSource* source_ = nullptr;
    Y4mFormat format_;
    uint64_t firstFrame_ = 0;
};

} // namespace cameras
} // namespace ostrel

#endif
