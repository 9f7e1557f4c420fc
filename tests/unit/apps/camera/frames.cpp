#include "frames.h"

#include <ostrel/processing.h>
#include <ostrel/virtual_camera.h>

namespace ostrel::tests {

namespace {

void append(Bytes& to, uint8_t blue, uint8_t green, uint8_t red, bool alpha) {
    to.insert(to.end(), {blue, green, red});
    if (alpha)
        to.push_back(255);
}

Bytes flag(int width, int height, bool alpha, bool bottomUp) {
    Bytes frame;
    for (int row = 0; row < height; ++row) {
        const int y = bottomUp ? height - 1 - row : row;
        append(frame, 255, 255, 255, alpha);
        for (int x = 1; x < width; ++x)
            append(frame, y < height / 2 ? 0 : 255, 0, y < height / 2 ? 255 : 0, alpha);
    }
    return frame;
}

} // namespace

Bytes flagArgb(int width, int height) {
    return flag(width, height, true, false);
}

Bytes flagRgb24(int width, int height, bool bottomUp) {
    return flag(width, height, false, bottomUp);
}

Bytes greyI420(int width, int height, uint8_t level) {
    const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    Bytes frame(pixels, level);
    frame.resize(pixels * 3 / 2, 128);
    return frame;
}

Y4mFile readY4m(const QByteArray& file, int width, int height) {
    Y4mFile result;
    const QByteArray mark("FRAME\n");
    const int frameBytes = width * height * 3 / 2;
    if (!file.startsWith("YUV4MPEG2 "))
        return result;
    result.header = file.left(file.indexOf('\n'));
    int at = static_cast<int>(result.header.size()) + 1;
    while (file.mid(at, mark.size()) == mark && at + mark.size() + frameBytes <= file.size()) {
        result.frames.append(file.mid(at + static_cast<int>(mark.size()), frameBytes));
        at += static_cast<int>(mark.size()) + frameBytes;
    }
    result.rest = file.mid(at);
    return result;
}

std::vector<uint32_t> countersOf(const Y4mFile& file, int width, int height) {
    std::vector<uint32_t> counters;
    Bytes argb(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    for (const QByteArray& frame : file.frames) {
        uint32_t counter = 0;
        uint32_t clock = 0;
        ostrel::OVideoConverter::I420ToARGB32(reinterpret_cast<const uint8_t*>(frame.constData()),
                                              argb.data(), width, height);
        ostrel::OVideoTestPatternCamera::decode(argb.data(), width, height, width * 4, counter, clock);
        counters.push_back(counter);
    }
    return counters;
}

QByteArray toByteArray(const Bytes& bytes) {
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()));
}

} // namespace ostrel::tests
