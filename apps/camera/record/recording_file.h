// What record writes its frames to.
#ifndef OSTREL_APPS_CAMERA_RECORD_RECORDING_FILE_H
#define OSTREL_APPS_CAMERA_RECORD_RECORDING_FILE_H

#include "apps/camera/frame_stream.h"
#include "apps/camera/options.h"

#include <memory>
#include <string>

namespace ostrel::apps::cli {

// Failures to write are thrown; the file then keeps the frames before the one that failed. Bound to one
// thread.
class RecordingFile {
public:
    virtual ~RecordingFile() = default;
    // In which form it wants its frames.
    virtual FrameStream::Wanted wanted() const = 0;
    virtual void write(const CapturedFrame& frame) = 0;
    // Ends the file. rate: at which the frames came, where that is known.
    virtual void finish(const std::optional<Rate>& rate) = 0;
    virtual uint64_t bytes() const = 0;
    virtual std::string displayName() const = 0; // for messages: "'recording.y4m'"
    virtual Size size() const = 0;               // of the pictures in it
};

// By the name, or by --format. Throws a Failure with EXIT_USAGE where they cannot be written, or do not go
// with the other options.
std::unique_ptr<RecordingFile> makeRecordingFile(const Options& options);

} // namespace ostrel::apps::cli

#endif
