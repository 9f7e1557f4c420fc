#include <ostrel/next_frame.h>

#include "capture/capture_access.h"
#include "capture/frame_reader.h"

#include <ostrel/processing.h>

#include <limits>
#include <memory>

namespace ostrel {

namespace {

using cameras::pixels::Output;
using cameras::pixels::OutputFormat;

bool formatOf(OVideoPixels pixels, OutputFormat& format) {
    switch (pixels) {
    case OVIDEO_PIXELS_BGRA:
        format = OutputFormat::Bgra;
        return true;
    case OVIDEO_PIXELS_BGR:
        format = OutputFormat::Bgr;
        return true;
    case OVIDEO_PIXELS_GREY:
        format = OutputFormat::Grey;
        return true;
    }
    return false;
}

// Whether the picture fits into so many bytes.
bool fits(const Output& to, size_t bytes) {
    const int row = to.width * cameras::pixels::bytesPerPixel(to.format);
    if (to.stride < row || to.stride > std::numeric_limits<int>::max() / 2)
        return false;
    return bytes >=
           static_cast<size_t>(to.stride) * static_cast<size_t>(to.height - 1) + static_cast<size_t>(row);
}

// False, with the reason, when no frame of this camera will ever be a picture.
bool hasPicture(SlotReader::Taken& taken) {
    const cameras::CameraFrame& frame = taken.frame->camera();
    if (!frame.hasPicture())
        taken.why = "No picture can be made of " + frame.facts().format + ": take native frames";
    return frame.hasPicture();
}

std::shared_ptr<FrameSlot> slotOf(const QSharedPointer<OVideoCaptureUnix>& capture) {
    const void* const session = CaptureAccess::sessionOf(capture.data());
    return session
               ? FrameSlot::of(session)
               : FrameSlot::over("The reader was made without a capture, or the capture was stopped before");
}

} // namespace

OVideoFrameFacts::OVideoFrameFacts() : d(new OVideoFrameFactsPrivate) {}

OVideoFrameFacts::OVideoFrameFacts(const OVideoFrameFacts& other)
    : d(new OVideoFrameFactsPrivate(*other.d)) {}

OVideoFrameFacts& OVideoFrameFacts::operator=(const OVideoFrameFacts& other) {
    if (this != &other)
        *d = *other.d;
    return *this;
}

OVideoFrameFacts::~OVideoFrameFacts() {
    delete d;
}

void OVideoFrameFactsPrivate::set(OVideoFrameFacts& to, const SlotFrame& frame, uint64_t passedOver) {
    to.d->facts = frame.camera().facts();
    to.d->number = frame.number;
    to.d->passedOver = passedOver;
}

uint32_t OVideoFrameFacts::number() const {
    return d->number;
}

uint32_t OVideoFrameFacts::sequence() const {
    return d->facts.sequence;
}

int64_t OVideoFrameFacts::captureTime() const {
    return d->facts.time;
}

OVideoFrameFacts::TimeSource OVideoFrameFacts::timeSource() const {
    switch (d->facts.source) {
    case cameras::TimeSource::StartOfExposure:
        return START_OF_EXPOSURE;
    case cameras::TimeSource::EndOfFrame:
        return END_OF_FRAME;
    case cameras::TimeSource::Arrival:
        break;
    }
    return ARRIVAL;
}

uint64_t OVideoFrameFacts::passedOver() const {
    return d->passedOver;
}

QString OVideoFrameFacts::nativeFormat() const {
    return textOf(d->facts.format);
}

int OVideoFrameFacts::nativeWidth() const {
    return d->facts.size.width;
}

int OVideoFrameFacts::nativeHeight() const {
    return d->facts.size.height;
}

OVideoFrameReader::OVideoFrameReader(const QSharedPointer<OVideoCaptureUnix>& capture)
    : d(new OVideoFrameReaderPrivate(slotOf(capture))) {}

OVideoFrameReader::~OVideoFrameReader() {
    delete d;
}

int OVideoFrameReader::descriptor() {
    return d->place.descriptor();
}

int nextVideoFrame(OVideoFrameReader& reader, VideoFrame& frame, int timeoutMs, OVideoFrameFacts* facts,
                   QString* why) {
    OVideoFrameReaderPrivate& mine = OVideoFrameReaderPrivate::of(reader);
    return mine.next(timeoutMs, why, [&](SlotReader::Taken& taken) {
        if (!hasPicture(taken))
            return -1;
        SlotFrame& found = *taken.frame;
        const int stride = found.width * 4;
        mine.spare.resize(static_cast<size_t>(stride) * static_cast<size_t>(found.height));
        if (!found.write({OutputFormat::Bgra, mine.spare.data(), found.width, found.height, stride},
                         taken.shared))
            return 0;
        if (facts)
            OVideoFrameFactsPrivate::set(*facts, found, mine.place.passedOver(found));
        mine.place.got(found);
        frame.formatId = 4;
        frame.frameNumber = found.number;
        frame.width = found.width;
        frame.height = found.height;
        frame.timestamp = OVideoCommon::get_time();
        frame.data.swap(mine.spare);
        return 1;
    });
}

int nextVideoFrame(OVideoFrameReader& reader, uint8_t* pixels, size_t bytes, int stride, OVideoPixels format,
                   int timeoutMs, OVideoFrameFacts* facts, QString* why) {
    OVideoFrameReaderPrivate& mine = OVideoFrameReaderPrivate::of(reader);
    OutputFormat wanted = OutputFormat::Bgra;
    if (!pixels || !formatOf(format, wanted)) {
        if (why)
            *why = textOf("There is no memory for the picture, or no such order of its bytes");
        return -1;
    }
    return mine.next(timeoutMs, why, [&](SlotReader::Taken& taken) {
        if (!hasPicture(taken))
            return -1;
        SlotFrame& found = *taken.frame;
        const Output to = {wanted, pixels, found.width, found.height, stride};
        if (!fits(to, bytes)) {
            taken.why = "A picture of " + std::to_string(found.width) + " x " + std::to_string(found.height) +
                        " pixels does not fit into " + std::to_string(bytes) + " bytes with rows " +
                        std::to_string(stride) + " bytes apart";
            return -1;
        }
        if (!found.write(to, taken.shared))
            return 0;
        if (facts)
            OVideoFrameFactsPrivate::set(*facts, found, mine.place.passedOver(found));
        mine.place.got(found);
        return 1;
    });
}

} // namespace ostrel
