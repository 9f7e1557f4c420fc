// Y4M data for tests.
#ifndef OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_VIRTUAL_Y4M_TEXT_H
#define OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_VIRTUAL_Y4M_TEXT_H

#include "platform/cameras/virtual/y4m_reader.h"

#include <algorithm>
#include <string>

namespace ostrel::tests {

// Bytes in memory. Can be told to fail, as a disk does.
class Memory : public cameras::ByteSource {
public:
    explicit Memory(std::string content = std::string()) : bytes(std::move(content)) {}

    int64_t read(uint64_t offset, void* to, size_t size) const override {
        if (failing)
            return -1;
        if (offset >= bytes.size())
            return 0;
        const size_t count = std::min<size_t>(size, bytes.size() - static_cast<size_t>(offset));
        std::copy_n(bytes.data() + offset, count, static_cast<char*>(to));
        return static_cast<int64_t>(count);
    }
    uint64_t size() const override { return bytes.size(); }

    std::string bytes;
    bool failing = false;
};

// A frame whose bytes are all the same.
inline std::string frame(size_t bytes, char value, const std::string& tags = "") {
    return "FRAME" + tags + "\n" + std::string(bytes, value);
}

} // namespace ostrel::tests

#endif
