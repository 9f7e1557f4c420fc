// Frames out of a file.
#ifndef OSTREL_APPS_CAMERA_FRAME_READER_H
#define OSTREL_APPS_CAMERA_FRAME_READER_H

#include "apps/camera/frame_converter.h"
#include "apps/camera/y4m.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace ostrel::apps::cli {

// Hands out frames of one size and layout. What is wrong with a file is thrown as a Failure with EXIT_FILE.
// Bound to one thread.
class FrameReader {
public:
    virtual ~FrameReader() = default;
    // False at the end. frame keeps its memory from call to call.
    virtual bool next(Bytes& frame) = 0;
    // The part that has been read, 0 to 1; below 0 when the length is not known.
    virtual double progress() const = 0;

    const Size& size() const { return size_; }
    Layout layout() const { return layout_; }
    const Rate& rate() const { return rate_; } // 30 where the format knows none

protected:
    void setFormat(const Size& size, Layout layout, const Rate& rate) {
        size_ = size;
        layout_ = layout;
        rate_ = rate;
    }

private:
    Size size_;
    Layout layout_ = Layout::Argb;
    Rate rate_;
};

// rawSize: needed for raw files, whose length must be whole frames of that size. A Failure with EXIT_USAGE
// says when it is missing, or given where the file states its own. bottomUp: the bottom row of RGB24 comes
// first.
std::unique_ptr<FrameReader> makeFrameReader(const std::string& path, const FileKind& kind,
                                             const std::optional<Size>& rawSize, bool bottomUp);

} // namespace ostrel::apps::cli

#endif
