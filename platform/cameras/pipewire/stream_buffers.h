// The buffers of one PipeWire stream: which of them wait for us, and which somebody still reads.
#ifndef OSTREL_PLATFORM_CAMERAS_PIPEWIRE_STREAM_BUFFERS_H
#define OSTREL_PLATFORM_CAMERAS_PIPEWIRE_STREAM_BUFFERS_H

#include "base/wake_descriptor.h"
#include "platform/cameras/backend.h"
#include "platform/cameras/buffer_frame.h"
#include "platform/cameras/pipewire/library.h"
#include "platform/cameras/pipewire/video_formats.h"
#include "platform/cameras/pixels/pixel_pool.h"
#include "platform/cameras/sequence_gaps.h"

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace ostrel {
namespace cameras {
namespace pipewire {

// Thread-safe. Everything that another process wrote into a buffer, sizes and offsets too, is read once and
// checked against the memory that is really there.
//
// Frames keep this object alive, but none of PipeWire's memory: what they hold is copied before it goes.
class StreamBuffers : public BufferOwner, public std::enable_shared_from_this<StreamBuffers> {
public:
    StreamBuffers(const Library& library, std::shared_ptr<Figures> figures);

    // Readable while a frame waits, and after wake(), until take().
    int descriptor() const { return wake_.descriptor(); }
    void wake() const { wake_.set(); }

    // By the stream's callbacks: buffers of the picture that was granted last come, fill and go.
    void setStream(pw_stream* stream);
    void setGranted(const Granted& granted);
    void add(pw_buffer* buffer);
    void remove(pw_buffer* buffer);
    void collect();

    // Copies what frames still hold and forgets the stream; waits for conversions in progress.
    void close();

    // The newest frame that waits, and the picture that it was granted as. Whether other programs get the
    // same buffers: then it is a copy, since who is done with one first has it filled again for all.
    void take(bool shared, Arrival& arrival, Granted& granted);

private:
    static constexpr size_t NONE = ~size_t(0);

    enum class Place { PipeWire, Waiting, Ours };
    struct Memory {
        const uint8_t* data = nullptr;
        size_t bytes = 0; // that are really there
        int descriptor = -1;
        bool synchronised = false; // it is another device's, of which the processor must be told
    };
    struct Buffer {
        pw_buffer* buffer = nullptr; // null: a place that is free
        Granted granted;
        std::array<Memory, 3> memory;
        Place place = Place::PipeWire;
        BufferFrame* frame = nullptr; // that reads it
    };

    void dropped(BufferFrame& frame, unsigned index) override;
    void giveBack(Buffer& buffer);
    void forget(Buffer& buffer);
    static void synchronise(Buffer& buffer, bool begin);
    size_t indexOf(const pw_buffer* buffer) const;
    bool accept(const Buffer& buffer, const pixels::Picture& picture);
    static pixels::Picture picture(const Buffer& buffer);
    static FrameFacts facts(const Buffer& buffer);

    const Library& library_;
    const std::shared_ptr<Figures> figures_;
    const std::shared_ptr<pixels::PixelPool> pool_;
    const WakeDescriptor wake_;

    std::mutex mutex_; // of the rest
    pw_stream* stream_ = nullptr;
    Granted granted_;
    std::vector<Buffer> buffers_;
    size_t newest_ = NONE; // the buffer that waits
    SequenceGaps gaps_;
};

} // namespace pipewire
} // namespace cameras
} // namespace ostrel

#endif
