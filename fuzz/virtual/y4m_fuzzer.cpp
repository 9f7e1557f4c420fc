// Files that claim to be Y4M: whatever the bytes are, every frame that is found lies within them and can be
// drawn.
#include "fuzz/support/check.h"

#include "platform/cameras/pixels/convert.h"
#include "platform/cameras/virtual/y4m_clip.h"
#include "platform/cameras/virtual/yuv_picture.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

using namespace ostrel::cameras;

namespace {

class Bytes : public ByteSource {
public:
    Bytes(const uint8_t* data, size_t size) : data_(data), size_(size) {}

    int64_t read(uint64_t offset, void* to, size_t size) const override {
        if (offset >= size_)
            return 0;
        const size_t count = std::min<size_t>(size, size_ - static_cast<size_t>(offset));
        std::memcpy(to, data_ + offset, count);
        return static_cast<int64_t>(count);
    }
    uint64_t size() const override { return size_; }

private:
    const uint8_t* const data_;
    const size_t size_;
};

void draw(const YuvLayout& layout, const std::vector<uint8_t>& planes, int width, int height) {
    std::vector<uint8_t> picture(static_cast<size_t>(width) * 4 * static_cast<size_t>(height));
    pixels::PixelPool pool;
    CHECK(pixels::convert(yuvPicture(layout, planes.data()),
                          {pixels::OutputFormat::Bgra, picture.data(), width, height, width * 4},
                          pool) == pixels::Fault::None);
    for (size_t i = 3; i < picture.size(); i += 4)
        CHECK(picture[i] == 255);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const Bytes source(data, size);
    Y4mReader reader;
    const std::string wrong = reader.open(source);
    const Y4mFormat& format = reader.format();
    if (!wrong.empty()) {
        CHECK(wrong.size() < 200 && wrong.find('\n') == std::string::npos);
        CHECK(format.layout.width == 0 && format.layout.height == 0 && format.framesPerSecond == 0);
        return 0;
    }
    CHECK(format.layout.width >= 1 && format.layout.height >= 1 && format.layout.bytes() < size);
    CHECK(format.framesPerSecond >= 0.001 && format.framesPerSecond <= 1000);

    Y4mPlayer player(reader, size % 2 != 0);
    std::vector<uint8_t> planes(format.layout.bytes());
    for (int frame = 0; frame < 8 && player.step() == Y4mPlayer::Step::Frame; ++frame) {
        CHECK(player.at() <= size && size - player.at() >= planes.size());
        CHECK(reader.readPlanes(player.at(), planes.data()));
        CHECK(std::equal(planes.begin(), planes.end(), data + player.at()));
        if (frame == 0) {
            draw(format.layout, planes, format.layout.width, format.layout.height);
            draw(format.layout, planes, 7, 5);
        }
    }
    return 0;
}
