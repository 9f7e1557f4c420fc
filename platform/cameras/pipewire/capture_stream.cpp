#include "platform/cameras/pipewire/capture_stream.h"

#include "base/monotonic_clock.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace ostrel {
namespace cameras {
namespace pipewire {

namespace {

// One held as the newest, one being converted, one being delivered, two for the camera to fill in turn.
const int WANTED_BUFFERS = 5;
const int FEWEST_BUFFERS = 2;
const int MOST_BUFFERS = 16;

// How long a daemon that says nothing holds up a stop, in nanoseconds.
const int64_t MOST_FOR_A_STOP = 100000000;

} // namespace

int errnoIn(const char* words, int otherwise) {
    for (const char* at = words ? std::strchr(words, '-') : nullptr; at; at = std::strchr(at + 1, '-')) {
        char* end = nullptr;
        const long number = std::strtol(at + 1, &end, 10);
        if (number > 0 && number < 4096 && end[0] == ' ' && end[1] == '(')
            return static_cast<int>(number);
    }
    return otherwise;
}

CaptureStream::CaptureStream(std::shared_ptr<Connection> connection, uint32_t node, std::string serial,
                             std::shared_ptr<Figures> figures)
    : connection_(std::move(connection)), node_(node), serial_(std::move(serial)),
      buffers_(std::make_shared<StreamBuffers>(connection_->library(), std::move(figures))) {}

CaptureStream::~CaptureStream() {
    buffers_->close();
    const Library& library = connection_->library();
    uint32_t own = SPA_ID_INVALID;
    {
        const Connection::Lock loop(*connection_);
        connection_->remove(this);
        if (!stream_)
            return;
        own = library.pw_stream_get_node_id(stream_);
        // While the loop runs: it waits for the callback in progress on the data thread.
        library.pw_stream_destroy(stream_);
        if (!link_)
            return;
        library.pw_proxy_destroy(link_);
    }
    // Buffers on their way to or from a consumer that leaves are lost to the camera until it gets new ones.
    // The session manager sees to that after some seconds, and a few starts before then would leave it
    // without any.
    connection_->suspend(node_, own, monotonicNanoseconds() + MOST_FOR_A_STOP);
}

int CaptureStream::begin(const Candidate& picture, const ModeWish& wish) {
    if (buffers_->descriptor() < 0)
        return EMFILE;
    const Library& library = connection_->library();
    const Connection::Lock loop(*connection_);
    stream_ =
        library.pw_stream_new(connection_->core(), "capture",
                              library.pw_properties_new(PW_KEY_MEDIA_TYPE, "Video", PW_KEY_MEDIA_CATEGORY,
                                                        "Capture", PW_KEY_MEDIA_ROLE, "Camera",
                                                        PW_KEY_TARGET_OBJECT, serial_.c_str(), nullptr));
    if (!stream_)
        return errno;
    buffers_->setStream(stream_);
    static const pw_stream_events events = [] {
        pw_stream_events all = {};
        all.version = PW_VERSION_STREAM_EVENTS;
        all.state_changed = onStateChanged;
        all.param_changed = onParamChanged;
        all.add_buffer = onAddBuffer;
        all.remove_buffer = onRemoveBuffer;
        all.process = onProcess;
        return all;
    }();
    library.pw_stream_add_listener(stream_, &streamListener_, &events, this);
    connection_->add(this);
    if (!connection_->has(serial_))
        return ENODEV; // it left before anybody watched

    uint8_t memory[4096];
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(memory, sizeof memory);
    std::vector<const spa_pod*> words = wordsFor(builder, picture, wish);
    // DONT_RECONNECT: without it the session manager answers a camera that has left with another camera.
    // RT_PROCESS: the data thread calls by itself. Without it, old versions pass the call on to the loop,
    // where it may still wait when the stream is destroyed.
    const int result = library.pw_stream_connect(
        stream_, PW_DIRECTION_INPUT, PW_ID_ANY,
        static_cast<pw_stream_flags>(PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_DONT_RECONNECT |
                                     PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS),
        words.data(), static_cast<uint32_t>(words.size()));
    return result < 0 ? -result : 0;
}

int CaptureStream::wait(int64_t deadline) {
    const std::chrono::steady_clock::time_point until{std::chrono::nanoseconds(deadline)};
    std::unique_lock<std::mutex> lock(mutex_);
    if (!changed_.wait_until(lock, until, [this] { return streaming_ || error_ != 0; }))
        return ETIMEDOUT;
    return error_;
}

int CaptureStream::ended() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return error_;
}

Granted CaptureStream::granted() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return granted_;
}

void CaptureStream::end(int error) {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (error_ == 0)
            error_ = error;
        changed_.notify_all();
    }
    buffers_->wake();
}

// Not every version tells the stream.
void CaptureStream::nodeLeft(uint32_t node) {
    if (node == node_)
        end(ENODEV);
}

void CaptureStream::connectionLost() {
    end(EPIPE);
}

// The stream hears nothing of a link that fails, because another program has the camera open for example; the
// link says why.
void CaptureStream::linkCame(uint32_t link, uint32_t, uint32_t to) {
    const Library& library = connection_->library();
    if (!stream_ || to != library.pw_stream_get_node_id(stream_))
        return;
    if (link_)
        library.pw_proxy_destroy(link_);
    link_ = connection_->bind(link, PW_TYPE_INTERFACE_Link, PW_VERSION_LINK);
    if (!link_)
        return;
    static const pw_link_events events = [] {
        pw_link_events all = {};
        all.version = PW_VERSION_LINK_EVENTS;
        all.info = onLinkInfo;
        return all;
    }();
    linkListener_ = {};
    pw_link_add_listener(reinterpret_cast<pw_link*>(link_), &linkListener_, &events, this);
}

void CaptureStream::onLinkInfo(void* data, const pw_link_info* info) {
    if (info->state == PW_LINK_STATE_ERROR)
        static_cast<CaptureStream*>(data)->end(errnoIn(info->error, EIO));
}

void CaptureStream::onStateChanged(void* data, pw_stream_state, pw_stream_state state, const char* error) {
    auto& self = *static_cast<CaptureStream*>(data);
    if (state == PW_STREAM_STATE_ERROR) {
        // Of a camera that was stopped a moment ago session managers say that there is none.
        self.end(errnoIn(error, EAGAIN));
    } else if (state == PW_STREAM_STATE_UNCONNECTED) {
        self.end(ENODEV);
    } else if (state == PW_STREAM_STATE_STREAMING) {
        const std::lock_guard<std::mutex> lock(self.mutex_);
        self.streaming_ = true;
        self.changed_.notify_all();
    }
}

void CaptureStream::onParamChanged(void* data, uint32_t id, const spa_pod* param) {
    auto& self = *static_cast<CaptureStream*>(data);
    const Library& library = self.connection_->library();
    if (!param || id != SPA_PARAM_Format)
        return;
    Granted granted;
    if (!readGranted(param, granted)) {
        library.pw_stream_set_error(self.stream_, -EINVAL, "a picture of another kind than was asked for");
        return;
    }
    self.buffers_->setGranted(granted);
    {
        const std::lock_guard<std::mutex> lock(self.mutex_);
        self.granted_ = granted;
    }
    // Any number of bytes from row to row, one block or several; memory that this process can map. MemFd has
    // to be among the types: libcamera's nodes know MemFd and DmaBuf only.
    uint8_t memory[1024];
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(memory, sizeof memory);
    const spa_pod* params[2];
    params[0] = static_cast<const spa_pod*>(spa_pod_builder_add_object(
        &builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_buffers,
        SPA_POD_CHOICE_RANGE_Int(WANTED_BUFFERS, FEWEST_BUFFERS, MOST_BUFFERS), SPA_PARAM_BUFFERS_dataType,
        SPA_POD_CHOICE_FLAGS_Int((1 << SPA_DATA_MemFd) | (1 << SPA_DATA_MemPtr))));
    params[1] = static_cast<const spa_pod*>(spa_pod_builder_add_object(
        &builder, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta, SPA_PARAM_META_type, SPA_POD_Id(SPA_META_Header),
        SPA_PARAM_META_size, SPA_POD_Int(sizeof(spa_meta_header))));
    library.pw_stream_update_params(self.stream_, params, 2);
}

void CaptureStream::onAddBuffer(void* data, pw_buffer* buffer) {
    static_cast<CaptureStream*>(data)->buffers_->add(buffer);
}

void CaptureStream::onRemoveBuffer(void* data, pw_buffer* buffer) {
    static_cast<CaptureStream*>(data)->buffers_->remove(buffer);
}

void CaptureStream::onProcess(void* data) {
    static_cast<CaptureStream*>(data)->buffers_->collect();
}

} // namespace pipewire
} // namespace cameras
} // namespace ostrel
