// The driver of one plugged device: its answers to ioctls, its buffers and the frames in them.
#ifndef OSTREL_TESTS_SUPPORT_V4L2_DRIVER_H
#define OSTREL_TESTS_SUPPORT_V4L2_DRIVER_H

#include "support/v4l2/device_script.h"

#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace ostrel::support {

// What a client did: misuse is what a real kernel would answer with a crash or with nothing.
struct Journal {
    std::vector<std::string> calls; // "open", "REQBUFS 5", "STREAMON", ... without the questions
    std::vector<std::string> misuse;
};

// A picture and the planes of memory that it takes.
struct PictureFormat {
    uint32_t type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    v4l2_pix_format pix = {};
    std::vector<uint32_t> planeBytes, planeStrides; // one for each plane; the offset of the data is in them
};

// Used under the kernel's lock, except for `serial`. Its descriptors are timers of the kernel's: readable
// when there is something for poll() to tell, at once or at the time of the next frame.
class Driver {
public:
    Driver(const DeviceScript& device, Journal& journal);
    ~Driver();
    Driver(const Driver&) = delete;
    Driver& operator=(const Driver&) = delete;

    int open(); // a descriptor
    void close(int descriptor);
    int ioctl(int descriptor, unsigned long request, void* argument); // 0 or an errno
    void* map(size_t length, long offset);                            // null: no such buffer
    void unmapped(long offset);
    short events(int descriptor, short asked); // that poll() reports now of those that are asked for

    void unplug();
    void excuse() { excused_ = true; } // it refused to take its buffers back: nobody can do it right
    void setEvents(short events);
    void stall() { stalled_ = true; } // no frame until STREAMON
    // Somebody else sets a control, or the camera itself.
    void setControl(uint32_t id, int64_t value) { become(*control(id), value, std::string()); }
    int64_t controlValue(uint32_t id) { return control(id)->value; }
    std::string controlText(uint32_t id) { return control(id)->text; }
    // Another signal comes in; of 0 x 0, none. Who has asked for it is told.
    void changeSource(const cameras::Size& size);
    bool feed(const FrameScript& frame);
    bool hasFrames() const { return !done_.empty(); }
    // When frame `number` comes by itself, CLOCK_MONOTONIC in nanoseconds; 0 before the stream runs.
    int64_t arrival(uint32_t number) const;

    const PictureFormat& format() const { return format_; }
    const cameras::Interval& interval() const { return interval_; }
    unsigned buffers() const { return static_cast<unsigned>(buffers_.size()); }
    unsigned queued() const;
    bool isStreaming() const { return streaming_; }
    uint64_t lost() const { return lost_; } // frames for which there was no buffer

    bool idle = false; // somebody has polled it in vain since the last frame
    std::mutex serial; // held during a call, where there is only one at a time
    bool oneCallAtATime() const { return device_.oneCallAtATime; }

private:
    struct Buffer {
        bool queued = false;
        int mappings = 0;
        uint32_t flags = 0, sequence = 0, bytesUsed = 0, field = 0;
        int claimedIndex = -1;
        timeval time = {};
    };

    struct Handle { // of one that has the node open
        int64_t armed = 0;
        bool wantsSource = false;
        std::set<uint32_t> wantsControls;
        std::vector<v4l2_event> told; // not yet fetched
    };
    struct ControlState {
        ControlScript script;
        int64_t value = 0;
        std::string text;
    };

    // driver_controls.cpp
    int controlQuestion(unsigned long request, void* argument);
    ControlState* control(uint32_t id);
    const ControlState* nextControl(uint32_t id);
    uint32_t flagsOf(const ControlState& control);
    template <typename Answer>
    int describeControl(Answer& answer);
    int describe(v4l2_querymenu& item);
    int values(v4l2_ext_controls& all, bool set, bool keep);
    int value(v4l2_ext_control& one, bool set, bool keep);
    int value(v4l2_control& one, bool set);
    int check(const ControlState& control, int64_t value);
    void become(ControlState& control, int64_t value, const std::string& text);
    int subscribe(Handle& handle, const v4l2_event_subscription& wanted);

    // driver_questions.cpp
    int question(int descriptor, unsigned long request, void* argument);
    int describe(v4l2_capability& caps) const;
    int describe(v4l2_fmtdesc& entry) const;
    int describe(v4l2_frmsizeenum& entry) const;
    int describe(v4l2_frmivalenum& entry) const;
    int describe(v4l2_input& entry) const;
    const FormatScript* listed(uint32_t fourcc) const;
    bool captures(uint32_t type) const;
    int negotiate(v4l2_format& format, bool keep);
    PictureFormat granted(uint32_t type, const v4l2_pix_format& asked) const;
    int parameters(v4l2_streamparm& parameters, bool set);

    // driver_source.cpp
    int sourceQuestion(unsigned long request, void* argument);
    int eventQuestion(Handle& handle, unsigned long request, void* argument);
    bool isReceiver() const { return timings_.width != 0; }
    bool isLocked() const { return incoming_ == timings_; }

    // driver_queue.cpp
    int command(int descriptor, unsigned long request, void* argument);
    int requestBuffers(int descriptor, v4l2_requestbuffers& request);
    void release();
    int reserve(unsigned count);
    int queryBuffer(v4l2_buffer& buffer) const;
    int queue(v4l2_buffer& buffer);
    int dequeue(v4l2_buffer& buffer);
    int switchStream(bool on);
    void describe(const Buffer& full, v4l2_buffer& buffer) const;
    uint8_t* memoryOf(unsigned buffer, size_t plane) const;
    size_t roomOf(size_t plane) const;
    void write(unsigned buffer, const std::vector<uint8_t>& bytes);
    void advance();
    void arm(int descriptor, Handle& handle, int64_t at) const;
    void rearm();

    const DeviceScript device_;
    Journal& journal_;
    std::map<int, Handle> handles_; // by descriptor
    std::vector<ControlState> controls_;
    bool gone_ = false;
    bool excused_ = false;
    short events_ = 0;
    PictureFormat format_;
    cameras::Interval interval_;

    cameras::Size incoming_, timings_; // of a receiver: what comes in, and what it is set up for

    int owner_ = -1; // the descriptor that has the buffers
    int memory_ = -1;
    uint8_t* mapped_ = nullptr;
    size_t bufferBytes_ = 0; // from one buffer to the next
    std::vector<Buffer> buffers_;
    std::vector<unsigned> waiting_; // queued, empty
    std::vector<unsigned> done_;    // queued, full
    bool streaming_ = false;
    bool stalled_ = false;
    int64_t started_ = 0;
    uint32_t sequence_ = 0; // the next
    uint64_t lost_ = 0;
};

int64_t monotonicNow(); // nanoseconds

} // namespace ostrel::support

#endif
