#include "stateful/reader_model.h"

#include <ostrel/virtual_camera.h>

#include <poll.h>

namespace stateful {

namespace {

// The pattern's cells cannot be read from a smaller picture.
bool canBeDecoded(int width, int height) {
    return width >= 160 && height >= 120;
}

int bytesOf(ostrel::OVideoPixels format) {
    return format == ostrel::OVIDEO_PIXELS_BGRA ? 4 : format == ostrel::OVIDEO_PIXELS_BGR ? 3 : 1;
}

} // namespace

ModelledReader::ModelledReader(const ModelledDriver& driver)
    : course_(driver.course()), reader_(driver.capture()) {}

void ModelledReader::check(int answer, const QString& why) const {
    expect(answer >= -1 && answer <= 1, "the answer " + std::to_string(answer));
    expect(answer != 1 || course_->mayDeliver, "a reader's frame without a camera");
    expect(!course_->over || answer == -1, "a reader's frame after the end");
    expect(answer != -1 || !why.isEmpty(), "an end without a reason");
}

void ModelledReader::checkFacts(const ostrel::OVideoFrameFacts& facts) {
    expect(facts.number() > 0, "a frame numbered 0");
    // A further start sets the numbers back at some later moment.
    const bool oneStart = course_->starts == 1 && lastStarts_ <= 1;
    expect(!oneStart || facts.number() > lastNumber_, "a frame twice, or one from before");
    expect(!oneStart || facts.number() - lastNumber_ > facts.passedOver() || lastNumber_ == 0,
           "more frames passed over than there were");
    lastNumber_ = facts.number();
    lastStarts_ = course_->starts;
    expect(facts.captureTime() > 0, "no time of capture");
    expect(!facts.nativeFormat().isEmpty() && facts.nativeWidth() > 0, "facts without a format");
}

bool ModelledReader::wasAskedFor(int width, int height) const {
    for (const Size& size : course_->sizes)
        if (size.width == width && size.height == height)
            return true;
    return false;
}

void ModelledReader::takeRecord(int milliseconds) {
    const int32_t untouched = -77;
    record_.formatId = untouched;
    ostrel::OVideoFrameFacts facts;
    QString why;
    const int answer = ostrel::nextVideoFrame(reader_, record_, limit(milliseconds), &facts, &why);
    check(answer, why);
    if (answer != 1) {
        expect(record_.formatId == untouched, "a record touched by the answer " + std::to_string(answer));
        return;
    }
    checkFacts(facts);
    const int width = record_.width, height = record_.height;
    expect(wasAskedFor(width, height), "a reader's record of another size");
    expect(record_.formatId == 4 && record_.frameNumber == facts.number(), "a record without its number");
    expect(record_.data.size() == static_cast<size_t>(width) * static_cast<size_t>(height) * 4,
           "a reader's record of another length");
    uint32_t counter = 0, clock = 0;
    if (!canBeDecoded(width, height))
        return;
    expect(ostrel::OVideoTestPatternCamera::decode(record_.data.data(), width, height, width * 4, counter,
                                                   clock),
           "a torn frame in a reader's record");
    expect(counter == facts.sequence(), "the facts of another frame");
}

void ModelledReader::takePixels(ostrel::OVideoPixels format, int padding, int milliseconds) {
    const uint8_t mark = 0xa7;
    const Size size = course_->sizes.empty() ? Size{320, 240} : course_->sizes.back();
    if (size.width < 1 || size.height < 1 || size.width > 2000 || size.height > 2000)
        return;
    const int row = size.width * bytesOf(format), stride = row + padding;
    pixels_.assign(static_cast<size_t>(stride) * static_cast<size_t>(size.height), mark);
    ostrel::OVideoFrameFacts facts;
    QString why;
    const int answer = ostrel::nextVideoFrame(reader_, pixels_.data(), pixels_.size(), stride, format,
                                              limit(milliseconds), &facts, &why);
    check(answer, why);
    if (answer != 1)
        return;
    checkFacts(facts);
    if (course_->starts > 1)
        return; // it may be a smaller one of the start before
    for (int y = 0; y < size.height; ++y)
        for (int x = row; x < stride; ++x)
            expect(pixels_[static_cast<size_t>(y) * static_cast<size_t>(stride) + static_cast<size_t>(x)] ==
                       mark,
                   "something written between the rows");
    uint32_t counter = 0, clock = 0;
    if (format == ostrel::OVIDEO_PIXELS_BGRA && canBeDecoded(size.width, size.height))
        expect(ostrel::OVideoTestPatternCamera::decode(pixels_.data(), size.width, size.height, stride,
                                                       counter, clock) &&
                   counter == facts.sequence(),
               "a torn frame, or another one, in own memory");
}

void ModelledReader::takeNative(int milliseconds) {
    QString why;
    const int answer = ostrel::nextNativeFrame(reader_, native_, limit(milliseconds), &why);
    check(answer, why);
    if (answer != 1)
        return;
    const ostrel::OVideoFrameFacts facts = native_.facts();
    checkFacts(facts);
    expect(native_.width() == facts.nativeWidth() && native_.height() == facts.nativeHeight(),
           "a native frame of another size");
    expect(native_.planes() >= 1 && native_.planes() <= 3, "planes " + std::to_string(native_.planes()));
    expect(native_.bytesUsed() >=
               static_cast<size_t>(native_.bytesPerLine(0)) * static_cast<size_t>(native_.height()),
           "a native frame that is too short");
}

void ModelledReader::refusePixels() {
    uint8_t pixel[3] = {1, 2, 3};
    QString why;
    const int answer = ostrel::nextVideoFrame(reader_, pixel, 0, 4, ostrel::OVIDEO_PIXELS_BGRA, 0, 0, &why);
    expect(answer != 1, "a picture in no bytes");
    expect(pixel[0] == 1 && pixel[1] == 2 && pixel[2] == 3, "bytes written where there was no room");
    const bool readable = isReadable();
    expect(answer != -1 || readable || course_->starts > 1, "a refusal has taken the frame away");
}

void ModelledReader::watchDescriptor() {
    const bool readable = isReadable();
    expect(readable || !course_->over, "the descriptor is silent about the end");
    QString why;
    const int answer = ostrel::nextNativeFrame(reader_, native_, 0, &why);
    check(answer, why);
    if (answer == 1)
        checkFacts(native_.facts());
    // A further start takes away what there was.
    expect(!readable || answer != 0 || course_->starts > 1, "the descriptor was readable for nothing");
    expect(answer != -1 || isReadable() || course_->starts > 1, "the descriptor forgot the end");
}

bool ModelledReader::isReadable() {
    pollfd ready = {reader_.descriptor(), POLLIN, 0};
    expect(ready.fd >= 0, "no descriptor");
    expect(::poll(&ready, 1, 0) >= 0, "a descriptor that cannot be waited for");
    return ready.revents != 0;
}

} // namespace stateful
