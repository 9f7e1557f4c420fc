// A descriptor that one thread makes readable for others that poll.
#ifndef OSTREL_BASE_WAKE_DESCRIPTOR_H
#define OSTREL_BASE_WAKE_DESCRIPTOR_H

namespace ostrel {

// Thread-safe. An eventfd where there is one (wake_eventfd.cpp), else a pipe (wake_pipe.cpp).
class WakeDescriptor {
public:
    WakeDescriptor();
    ~WakeDescriptor();

    // False when the system had no descriptor to give: the other calls do nothing then.
    bool valid() const { return reader_ >= 0; }
    // For poll() alone. -1 when there is none.
    int descriptor() const { return reader_; }
    // Readable from now on, until it is cleared. Never blocks.
    void set() const;
    // Whether it was readable.
    bool clear() const;

private:
    WakeDescriptor(const WakeDescriptor&);
    WakeDescriptor& operator=(const WakeDescriptor&);

    int reader_;
    int writer_; // the same one for an eventfd
};

} // namespace ostrel

#endif
