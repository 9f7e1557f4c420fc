#include <ostrel/native_frame.h>

#include "capture/frame_reader.h"
#include "platform/cameras/pixels/jpeg_tables.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace ostrel {

namespace {

using cameras::pixels::Layout;
using cameras::pixels::Picture;
using cameras::pixels::YuvMatrix;

OVideoNativeFrame::Encoding encodingOf(YuvMatrix matrix) {
    switch (matrix) {
    case YuvMatrix::Bt709:
    case YuvMatrix::Bt709Full:
        return OVideoNativeFrame::BT709;
    case YuvMatrix::Bt2020:
    case YuvMatrix::Bt2020Full:
        return OVideoNativeFrame::BT2020;
    case YuvMatrix::Bt601:
    case YuvMatrix::Bt601Full:
        break;
    }
    return OVideoNativeFrame::BT601;
}

OVideoNativeFrame::Fields fieldsOf(cameras::pixels::Fields fields) {
    switch (fields) {
    case cameras::pixels::Fields::TopFirst:
        return OVideoNativeFrame::TOP_FIRST;
    case cameras::pixels::Fields::BottomFirst:
        return OVideoNativeFrame::BOTTOM_FIRST;
    case cameras::pixels::Fields::Woven:
        break;
    }
    return OVideoNativeFrame::WOVEN;
}

} // namespace

struct OVideoNativeFramePrivate {
    OVideoFrameFacts facts;
    int width = 0, height = 0;
    OVideoNativeFrame::Encoding encoding = OVideoNativeFrame::BT601;
    bool fullRange = false;
    OVideoNativeFrame::Fields fields = OVideoNativeFrame::WOVEN;
    size_t planes = 0;
    std::array<size_t, 3> offsets{};
    std::array<int, 3> strides{};
    std::vector<uint8_t> bytes;

    static OVideoNativeFramePrivate& of(OVideoNativeFrame& frame) { return *frame.d; }
    void copy(const Picture& picture);
    bool has(int plane) const { return plane >= 0 && static_cast<size_t>(plane) < planes; }
};

// One plane after the other, each as long as its rows are far apart: as in a driver's one block, wherever the
// planes come from. What stood between the rows is copied as well, behind the last one there is nothing.
void OVideoNativeFramePrivate::copy(const Picture& picture) {
    const bool compressed = picture.layout == Layout::Jpeg;
    const int count = cameras::pixels::planeCount(picture.layout);
    std::array<size_t, 3> begin{};
    size_t end = 0, next = 0;
    for (int i = 0; i < count; ++i) {
        const auto at = static_cast<size_t>(i);
        const int rows = cameras::pixels::planeShape(picture.layout, i, picture.width, picture.height).rows;
        begin[at] = next;
        end = next + cameras::pixels::bytesOfPlane(picture, i);
        next += static_cast<size_t>(picture.planes[at].stride) * static_cast<size_t>(rows);
    }
    bytes.resize(end); // what may fail, before anything has changed
    planes = static_cast<size_t>(count);
    offsets = begin;
    for (size_t i = 0; i < planes; ++i) {
        const size_t room = (i + 1 < planes ? begin[i + 1] : end) - begin[i];
        const size_t size = cameras::pixels::bytesOfPlane(picture, static_cast<int>(i));
        std::memcpy(bytes.data() + begin[i], picture.planes[i].data, size);
        std::fill_n(bytes.data() + begin[i] + size, room - size, uint8_t(0));
        strides[i] = compressed ? 0 : picture.planes[i].stride;
    }
    width = picture.width;
    height = picture.height;
    encoding = encodingOf(picture.matrix);
    fullRange = cameras::pixels::isFullRange(picture.matrix);
    fields = fieldsOf(picture.fields);
}

OVideoNativeFrame::OVideoNativeFrame() : d(new OVideoNativeFramePrivate) {}

OVideoNativeFrame::OVideoNativeFrame(const OVideoNativeFrame& other)
    : d(new OVideoNativeFramePrivate(*other.d)) {}

OVideoNativeFrame& OVideoNativeFrame::operator=(const OVideoNativeFrame& other) {
    if (this != &other)
        *d = *other.d;
    return *this;
}

OVideoNativeFrame::~OVideoNativeFrame() {
    delete d;
}

QString OVideoNativeFrame::format() const {
    return d->facts.nativeFormat();
}

int OVideoNativeFrame::width() const {
    return d->width;
}

int OVideoNativeFrame::height() const {
    return d->height;
}

OVideoNativeFrame::Encoding OVideoNativeFrame::encoding() const {
    return d->encoding;
}

bool OVideoNativeFrame::isFullRange() const {
    return d->fullRange;
}

OVideoNativeFrame::Fields OVideoNativeFrame::fields() const {
    return d->fields;
}

int OVideoNativeFrame::planes() const {
    return static_cast<int>(d->planes);
}

size_t OVideoNativeFrame::planeOffset(int plane) const {
    return d->has(plane) ? d->offsets[static_cast<size_t>(plane)] : 0;
}

int OVideoNativeFrame::bytesPerLine(int plane) const {
    return d->has(plane) ? d->strides[static_cast<size_t>(plane)] : 0;
}

const uint8_t* OVideoNativeFrame::data() const {
    return d->bytes.data();
}

size_t OVideoNativeFrame::bytesUsed() const {
    return d->bytes.size();
}

QByteArray OVideoNativeFrame::jpeg() const {
    if (format() != QLatin1String("MJPG"))
        return QByteArray();
    const std::vector<uint8_t> whole = cameras::pixels::completeJpeg(d->bytes.data(), d->bytes.size());
    return QByteArray(reinterpret_cast<const char*>(whole.data()), static_cast<int>(whole.size()));
}

OVideoFrameFacts OVideoNativeFrame::facts() const {
    return d->facts;
}

int nextNativeFrame(OVideoFrameReader& reader, OVideoNativeFrame& frame, int timeoutMs, QString* why) {
    OVideoFrameReaderPrivate& mine = OVideoFrameReaderPrivate::of(reader);
    OVideoNativeFramePrivate& to = OVideoNativeFramePrivate::of(frame);
    return mine.next(timeoutMs, why, [&](SlotReader::Taken& taken) {
        const bool shown = taken.frame->camera().show([&](const Picture& picture) { to.copy(picture); });
        if (!shown)
            return 0;
        OVideoFrameFactsPrivate::set(to.facts, *taken.frame, mine.place.passedOver(*taken.frame));
        mine.place.got(*taken.frame);
        return 1;
    });
}

} // namespace ostrel
