// What a client's reader does, for every form in which it wants its frames.
#ifndef OSTREL_CAPTURE_FRAME_READER_H
#define OSTREL_CAPTURE_FRAME_READER_H

#include <ostrel/next_frame.h>

#include "base/monotonic_clock.h"
#include "base/qt_text.h"
#include "platform/QTKit/slot_reader.h"

#include <vector>

namespace ostrel {

struct OVideoFrameFactsPrivate {
    cameras::FrameFacts facts;
    uint32_t number = 0;
    uint64_t passedOver = 0;

    static void set(OVideoFrameFacts& to, const SlotFrame& frame, uint64_t passedOver);
};

struct OVideoFrameReaderPrivate {
    explicit OVideoFrameReaderPrivate(const std::shared_ptr<FrameSlot>& slot) : place(slot) {}

    SlotReader place;
    std::vector<uint8_t>
        spare; // a picture that is being made: the client's frame is touched by whole ones only

    static OVideoFrameReaderPrivate& of(OVideoFrameReader& reader) { return *reader.d; }

    // Waits for frames until one is of use: use(taken) answers 1, 0 for a broken one, or -1, with the reason
    // in taken.why, when it cannot use any; as if it had not taken it then.
    template <typename Use>
    int next(int timeoutMs, QString* why, Use use);
};

template <typename Use>
int OVideoFrameReaderPrivate::next(int timeoutMs, QString* why, Use use) {
    const int64_t until =
        timeoutMs < 0 ? -1 : monotonicNanoseconds() + timeoutMs * NANOSECONDS_PER_MILLISECOND;
    SlotReader::Taken taken;
    for (;;) {
        const SlotReader::Found found = place.take(until, taken);
        if (found == SlotReader::Found::Nothing)
            return 0;
        int used = -1;
        if (found == SlotReader::Found::Frame) {
            try {
                used = use(taken);
            } catch (...) {
                place.putBack(*taken.frame);
                throw;
            }
            if (used < 0)
                place.putBack(*taken.frame);
        }
        if (used < 0 && why)
            *why = textOf(taken.why);
        if (used != 0)
            return used;
    }
}

} // namespace ostrel

#endif
