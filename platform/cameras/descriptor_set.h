// Several descriptors as one, which is readable while any of them is.
#ifndef OSTREL_PLATFORM_CAMERAS_DESCRIPTOR_SET_H
#define OSTREL_PLATFORM_CAMERAS_DESCRIPTOR_SET_H

namespace ostrel {
namespace cameras {

// Bound to one thread at a time. A descriptor that is closed leaves the set by itself. An epoll set
// (descriptor_set_epoll.cpp), on macOS a kernel queue (descriptor_set_kqueue.cpp).
class DescriptorSet {
public:
    DescriptorSet();
    ~DescriptorSet();
    DescriptorSet(const DescriptorSet&) = delete;
    DescriptorSet& operator=(const DescriptorSet&) = delete;

    // False when it cannot be watched, as -1 cannot, or when the system has no room. Once is enough.
    bool add(int descriptor);

    // -1 when the system had none left.
    int descriptor() const { return descriptor_; }

private:
    const int descriptor_;
};

} // namespace cameras
} // namespace ostrel

#endif
