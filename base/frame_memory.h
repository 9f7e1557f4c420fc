// Memory for the pixels of a frame.
#ifndef OSTREL_BASE_FRAME_MEMORY_H
#define OSTREL_BASE_FRAME_MEMORY_H

#include <memory>
#include <stddef.h>

namespace ostrel {

// Owns a block, or none. Its contents are undefined at first. Movable; bound to one thread.
//
// A block of LARGE bytes or more is a mapping of its own: it goes back to the system with its owner, takes
// memory as it is written to, and lies in large pages where the kernel has them. A fresh one of 1.4 MB costs
// a seventh of what it costs in small pages, so it serves for a moment as well as for long. Smaller blocks
// come from the heap.
class FrameMemory {
public:
    static const size_t LARGE = 1024 * 1024; // bytes

    FrameMemory() : data_(0) {}

    // Throws std::bad_alloc when there is no memory.
    explicit FrameMemory(size_t bytes);

    // Aligned for every vector instruction.
    unsigned char* data() const { return block_ ? data_ : 0; }
    void reset() { block_.reset(); }

private:
    struct GiveBack {
        GiveBack() : mapped(0) {}
        explicit GiveBack(size_t bytes) : mapped(bytes) {}
        void operator()(unsigned char* block) const;
        size_t mapped; // bytes; 0 for a block of the heap
    };

    std::unique_ptr<unsigned char, GiveBack> block_;
    unsigned char* data_; // in the block
};

} // namespace ostrel

#endif
