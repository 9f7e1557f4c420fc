// A Y4M file that is open, and a place in it.
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_Y4M_CLIP_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_Y4M_CLIP_H

#include "platform/cameras/virtual/y4m_reader.h"

#include <memory>
#include <string>

namespace ostrel {
namespace cameras {

// Reads the file only where it is asked to; the file may change, shrink or be removed meanwhile. Thread-safe.
class Y4mClip {
public:
    // Returns an empty text and the clip, or one line that says what is wrong with the file.
    static std::string open(const std::string& path, std::shared_ptr<Y4mClip>& clip);

    explicit Y4mClip(std::unique_ptr<ByteSource> source) : source_(std::move(source)) {}

    const Y4mFormat& format() const { return reader_.format(); }
    const Y4mReader& reader() const { return reader_; }
    std::string readHeader() { return reader_.open(*source_); }

private:
    const std::unique_ptr<ByteSource> source_;
    Y4mReader reader_;
};

// Walks through a clip. Bound to one thread.
class Y4mPlayer {
public:
    enum class Step {
        Frame,
        Finished, // the last frame was passed and it does not loop
        Broken
    };

    Y4mPlayer(const Y4mReader& reader, bool loop)
        : reader_(reader), loop_(loop), position_(reader.firstFrame()) {}

    // Goes on to the next frame; at() is then where its planes are.
    Step step();
    uint64_t at() const { return planes_; }

private:
    const Y4mReader& reader_;
    const bool loop_;
    uint64_t position_;
    uint64_t planes_ = 0;
};

} // namespace cameras
} // namespace ostrel

#endif
