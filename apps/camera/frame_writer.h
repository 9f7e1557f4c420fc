// Frames into a file.
#ifndef OSTREL_APPS_CAMERA_FRAME_WRITER_H
#define OSTREL_APPS_CAMERA_FRAME_WRITER_H

#include "apps/camera/frame_converter.h"
#include "apps/camera/output_file.h"
#include "apps/camera/y4m.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace ostrel::apps::cli {

// Takes frames of one size in the layout of its kind. Failures to write are thrown; a stream then keeps the
// frames before the one that failed, whole. Bound to one thread.
class FrameWriter {
public:
    virtual ~FrameWriter() = default;
    virtual void write(const Bytes& frame) = 0;
    // Ends the file; measured is the rate at which the frames came, where somebody knows it.
    virtual void finish(const std::optional<Rate>& measured) = 0;
    virtual uint64_t frames() const = 0;
    // For messages: "'recording.y4m'".
    virtual std::string displayName() const = 0;
};

// rate: what a Y4M file says; finish() replaces it in a regular file. A PNG path may hold one %d or %04d,
// which the number of the picture, from 1, replaces; without it there can be one picture only.
std::unique_ptr<FrameWriter> makeFrameWriter(const std::string& path, const FileKind& kind, const Size& size,
                                             const Rate& rate);

// Whether a PNG path stands for a series of pictures, and the path of one of them.
bool isNumberedPath(const std::string& path);
std::string numberedPath(const std::string& path, uint64_t number);

// frame: ARGB, whose A is not looked at.
std::string encodePng(const Bytes& frame, const Size& size);

} // namespace ostrel::apps::cli

#endif
