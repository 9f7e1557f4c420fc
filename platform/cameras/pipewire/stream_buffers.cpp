// Locks: this object's own, then a frame's. Where the loop's lock is held as well, it was taken first.
#include "platform/cameras/pipewire/stream_buffers.h"

#include "base/monotonic_clock.h"
#include "platform/cameras/pixels/pixel_format.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <linux/dma-buf.h>
#include <new>
#include <sys/ioctl.h>
#include <sys/stat.h>

namespace ostrel {
namespace cameras {
namespace pipewire {

namespace {

// Fewer, and the camera would have none to fill.
const long LEFT_FOR_THE_CAMERA = 2;

// libpipewire's own limit. Their places are made beforehand, since its callbacks must not throw.
const size_t MOST_BUFFERS = 64;

const spa_meta_header* headerOf(const spa_buffer* buffer) {
    return static_cast<const spa_meta_header*>(
        spa_buffer_find_meta_data(buffer, SPA_META_Header, sizeof(spa_meta_header)));
}

// The other process may change it at any moment: it is read once.
template <typename Value>
Value once(const Value& value) {
    return *const_cast<const volatile Value*>(&value);
}

// How much of a block there is to read. A file may be shorter than is said of it, and may be cut afterwards
// unless it is sealed: reading what is missing would end this process.
size_t bytesOf(const spa_data& data) {
    if (!data.data)
        return 0;
    if (data.type != SPA_DATA_MemFd)
        return data.maxsize;
    const int descriptor = static_cast<int>(data.fd);
    ::fcntl(descriptor, F_ADD_SEALS, F_SEAL_SHRINK); // other memory than a sealable file has no need of it
    struct stat file = {};
    if (::fstat(descriptor, &file) != 0 || file.st_size <= 0)
        return data.maxsize; // another device's memory, of which older kernels do not tell the size
    const auto end = static_cast<uint64_t>(file.st_size);
    return end < uint64_t(data.mapoffset) + data.maxsize ? 0 : data.maxsize;
}

} // namespace

StreamBuffers::StreamBuffers(const Library& library, std::shared_ptr<Figures> figures)
    : library_(library), figures_(std::move(figures)), pool_(std::make_shared<pixels::PixelPool>()) {
    buffers_.reserve(MOST_BUFFERS);
}

void StreamBuffers::setStream(pw_stream* stream) {
    const std::lock_guard<std::mutex> lock(mutex_);
    stream_ = stream;
}

void StreamBuffers::setGranted(const Granted& granted) {
    const std::lock_guard<std::mutex> lock(mutex_);
    granted_ = granted;
}

size_t StreamBuffers::indexOf(const pw_buffer* buffer) const {
    const auto found = std::find_if(buffers_.begin(), buffers_.end(),
                                    [&](const Buffer& one) { return one.buffer == buffer; });
    return found == buffers_.end() ? NONE : static_cast<size_t>(found - buffers_.begin());
}

void StreamBuffers::add(pw_buffer* buffer) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!stream_)
        return;
    size_t index = indexOf(nullptr);
    if (index == NONE) {
        if (buffers_.size() == MOST_BUFFERS)
            return;
        index = buffers_.size();
        buffers_.emplace_back();
    }
    Buffer& place = buffers_[index];
    place = Buffer();
    place.buffer = buffer;
    place.granted = granted_;
    const spa_buffer& blocks = *buffer->buffer;
    for (size_t i = 0; i < std::min<size_t>(blocks.n_datas, place.memory.size()); ++i) {
        Memory& memory = place.memory[i];
        memory.data = static_cast<const uint8_t*>(blocks.datas[i].data);
        memory.bytes = bytesOf(blocks.datas[i]);
        memory.descriptor =
            blocks.datas[i].type == SPA_DATA_MemFd ? static_cast<int>(blocks.datas[i].fd) : -1;
        memory.synchronised = memory.descriptor >= 0; // until it turns out not to be
    }
}

void StreamBuffers::remove(pw_buffer* buffer) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const size_t index = indexOf(buffer);
    if (index == NONE)
        return;
    if (newest_ == index)
        newest_ = NONE;
    forget(buffers_[index]);
}

// Before PipeWire takes the memory back.
void StreamBuffers::forget(Buffer& buffer) {
    if (buffer.frame)
        buffer.frame->detach();
    if (buffer.place == Place::Ours)
        synchronise(buffer, false);
    buffer = Buffer();
}

void StreamBuffers::close() {
    const std::lock_guard<std::mutex> lock(mutex_);
    stream_ = nullptr;
    newest_ = NONE;
    for (Buffer& buffer : buffers_)
        if (buffer.buffer)
            forget(buffer);
    buffers_.clear();
    pool_->retire();
}

void StreamBuffers::giveBack(Buffer& buffer) {
    buffer.place = Place::PipeWire;
    library_.pw_stream_queue_buffer(stream_, buffer.buffer);
}

// On PipeWire's data thread, which serves every stream of the connection: only the newest is kept.
void StreamBuffers::collect() {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!stream_)
        return;
    bool any = false;
    while (pw_buffer* const filled = library_.pw_stream_dequeue_buffer(stream_)) {
        const size_t index = indexOf(filled);
        if (index == NONE) { // one too many to be remembered
            figures_->drop(Drop::UnknownBuffer);
            library_.pw_stream_queue_buffer(stream_, filled);
            continue;
        }
        if (const spa_meta_header* const header = headerOf(filled->buffer))
            figures_->countLost(gaps_.before(static_cast<uint32_t>(once(header->seq))));
        if (newest_ != NONE) {
            giveBack(buffers_[newest_]);
            figures_->countSkipped(1);
        }
        buffers_[index].place = Place::Waiting;
        newest_ = index;
        any = true;
    }
    if (any)
        wake();
}

// Memory that a device has written to directly may differ from what the processor has of it.
void StreamBuffers::synchronise(Buffer& buffer, bool begin) {
    dma_buf_sync request = {};
    request.flags = DMA_BUF_SYNC_READ | (begin ? DMA_BUF_SYNC_START : DMA_BUF_SYNC_END);
    for (Memory& memory : buffer.memory) {
        if (!memory.synchronised)
            continue;
        while (::ioctl(memory.descriptor, DMA_BUF_IOCTL_SYNC, &request) != 0) {
            if (errno == EINTR || errno == EAGAIN)
                continue;
            memory.synchronised = false; // it is ordinary memory
            break;
        }
    }
}

pixels::Picture StreamBuffers::picture(const Buffer& buffer) {
    pixels::Picture picture;
    picture.layout = buffer.granted.layout;
    picture.matrix = buffer.granted.matrix;
    picture.width = buffer.granted.size.width;
    picture.height = buffer.granted.size.height;
    const spa_buffer& blocks = *buffer.buffer->buffer;
    const auto planes = static_cast<unsigned>(pixels::planeCount(picture.layout));
    const bool separate = planes > 1 && blocks.n_datas == planes;
    for (unsigned i = 0; i < (separate ? planes : std::min(blocks.n_datas, 1u)); ++i) {
        const Memory& memory = buffer.memory[i];
        const spa_chunk& chunk = *blocks.datas[i].chunk;
        const size_t begin = std::min<size_t>(once(chunk.offset), memory.bytes);
        const size_t bytes = std::min<size_t>(once(chunk.size), memory.bytes - begin);
        const auto stride = static_cast<uint32_t>(std::max(once(chunk.stride), 0));
        if (separate) {
            const pixels::PlaneShape rows =
                pixels::planeShape(picture.layout, static_cast<int>(i), picture.width, picture.height);
            picture.planes[i] = {memory.data + begin, bytes, pixels::saneStride(stride, rows.rowBytes)};
        } else {
            const int least = pixels::minimumStride(picture.layout, picture.width);
            pixels::setBlock(picture, memory.data + begin, bytes,
                             pixels::saneStride(stride, static_cast<size_t>(least)));
        }
    }
    return picture;
}

FrameFacts StreamBuffers::facts(const Buffer& buffer) {
    FrameFacts facts;
    const spa_meta_header* const header = headerOf(buffer.buffer->buffer);
    const int64_t now = monotonicNanoseconds();
    const int64_t time = header ? once(header->pts) : 0;
    // Some programs count from their own start instead of the machine's.
    const bool sane = time > now - 10 * NANOSECONDS_PER_SECOND && time <= now && time > 0;
    facts.sequence = header ? static_cast<uint32_t>(once(header->seq)) : 0;
    facts.time = sane ? time : now;
    facts.source = sane ? TimeSource::EndOfFrame : TimeSource::Arrival;
    facts.format = pixels::fourccText(buffer.granted.fourcc);
    facts.size = buffer.granted.size;
    return facts;
}

bool StreamBuffers::accept(const Buffer& buffer, const pixels::Picture& picture) {
    const spa_buffer& blocks = *buffer.buffer->buffer;
    const spa_meta_header* const header = headerOf(&blocks);
    if ((header && (once(header->flags) & SPA_META_HEADER_FLAG_CORRUPTED)) ||
        (blocks.n_datas > 0 &&
         (static_cast<uint32_t>(once(blocks.datas[0].chunk->flags)) & SPA_CHUNK_FLAG_CORRUPTED))) {
        figures_->drop(Drop::Damaged);
        return false;
    }
    const pixels::Fault fault = pixels::faultOf(picture);
    if (fault != pixels::Fault::None)
        figures_->drop(fault);
    return fault == pixels::Fault::None;
}

void StreamBuffers::take(bool shared, Arrival& arrival, Granted& granted) {
    const std::lock_guard<std::mutex> lock(mutex_);
    wake_.clear();
    if (!stream_ || newest_ == NONE)
        return;
    const size_t index = newest_;
    Buffer& buffer = buffers_[index];
    newest_ = NONE;
    arrival.signOfLife = true;
    granted = buffer.granted;
    synchronise(buffer, true);
    buffer.place = Place::Ours;
    const pixels::Picture picture = StreamBuffers::picture(buffer);
    std::shared_ptr<BufferFrame> frame;
    try {
        if (accept(buffer, picture))
            frame = std::make_shared<BufferFrame>(shared_from_this(), static_cast<unsigned>(index), picture,
                                                  facts(buffer), pool_, figures_);
    } catch (const std::bad_alloc&) {
        figures_->drop(Drop::NoMemory); // a frame is lost, but not its buffer
    }
    const auto left = std::count_if(buffers_.begin(), buffers_.end(), [](const Buffer& one) {
        return one.buffer && one.place == Place::PipeWire;
    });
    if (frame && !shared && left >= LEFT_FOR_THE_CAMERA) {
        buffer.frame = frame.get();
    } else {
        if (frame)
            frame->detach();
        synchronise(buffer, false);
        giveBack(buffer);
    }
    arrival.frame = std::move(frame);
}

void StreamBuffers::dropped(BufferFrame& frame, unsigned index) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!stream_ || index >= buffers_.size() || buffers_[index].frame != &frame)
        return; // a copy, or the buffer has gone
    buffers_[index].frame = nullptr;
    synchronise(buffers_[index], false);
    giveBack(buffers_[index]);
}

} // namespace pipewire
} // namespace cameras
} // namespace ostrel
