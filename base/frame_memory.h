// Memory for the pixels of a frame.
#ifndef OSTREL_BASE_FRAME_MEMORY_H
#define OSTREL_BASE_FRAME_MEMORY_H

#include <memory>
#include <stddef.h>

namespace ostrel {

// Owns a block, or none. Its contents are undefined at first. Movable; bound to one thread.
class FrameMemory {
public:
    FrameMemory() : m_data(0) {}

    // Throws std::bad_alloc when there is no memory.
    explicit FrameMemory(size_t bytes);

    // Aligned for every vector instruction.
    unsigned char* data() const { return m_block ? m_data : 0; }
    void reset() { m_block.reset(); }

private:
    std::unique_ptr<unsigned char[]> m_block;
    unsigned char* m_data; // in the block
};

} // namespace ostrel

#endif
