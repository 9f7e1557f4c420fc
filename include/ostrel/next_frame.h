// Waiting for the frames of a capture, with a time limit or by a descriptor, instead of polling (where the
// library is built over the system's own QTKit the calls answer -1 and say so).
#ifndef OSTREL_NEXT_FRAME_H
#define OSTREL_NEXT_FRAME_H

#include <ostrel/capture.h>
#include <ostrel/export.h>

#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <stddef.h>
#include <stdint.h>

namespace ostrel {

struct OVideoFrameFactsPrivate;
struct OVideoFrameReaderPrivate;

// What is known about one frame. A value: copies are independent, each is bound to one thread at a time.
class OSTREL_EXPORT OVideoFrameFacts {
public:
    enum TimeSource {
        START_OF_EXPOSURE = 1, // the driver's time of the first light of the frame
        END_OF_FRAME = 2,      // the driver's time when the frame had come in whole
        ARRIVAL = 3            // when the library received it: the driver does not say
    };

    OVideoFrameFacts();
    OVideoFrameFacts(const OVideoFrameFacts& other);
    OVideoFrameFacts& operator=(const OVideoFrameFacts& other);
    ~OVideoFrameFacts();

    // Of this picture: 1 for the first frame since the capture was started, as frameNumber counts. Wraps.
    uint32_t number() const;
    // As the driver counts, gaps are frames that it lost; wraps, may start anywhere, and some drivers leave
    // it at 0. Pushed frames and those of a file count from 0, those of the test pattern as in the picture.
    uint32_t sequence() const;
    // When it was captured, in nanoseconds of CLOCK_MONOTONIC, and what is meant by that.
    int64_t captureTime() const;
    TimeSource timeSource() const;
    // Frames of the capture since this reader's last one that it did not get, broken ones included; before
    // its first, since the reader was made.
    uint64_t passedOver() const;
    // As the camera delivered it: four characters (blanks at the end left out), and pixels.
    QString nativeFormat() const;
    int nativeWidth() const;
    int nativeHeight() const;

private:
    friend struct OVideoFrameFactsPrivate;
    OVideoFrameFactsPrivate* d;
};

// A place in the frames of one capture. Made on the capture's thread, before or after its start; from then on
// bound to one thread, any. Several threads that wait have a reader each. Does not keep the capture.
class OSTREL_EXPORT OVideoFrameReader {
public:
    explicit OVideoFrameReader(const QSharedPointer<OVideoCaptureUnix>& capture);
    ~OVideoFrameReader();

    // For poll(), epoll or QSocketNotifier, to wait for reading only: readable for as long as there is a
    // frame that this reader has not had, and for as long as none will come any more. Belongs to the reader,
    // valid as long as it. -1 when the system has no descriptor left.
    int descriptor();

private:
    Q_DISABLE_COPY(OVideoFrameReader)
    friend struct OVideoFrameReaderPrivate;
    OVideoFrameReaderPrivate* d;
};

// Bytes of a pixel, top row first.
enum OVideoPixels {
    OVIDEO_PIXELS_BGRA = 1, // four: B, G, R, A; A is 255
    OVIDEO_PIXELS_BGR = 2,  // three: B, G, R
    OVIDEO_PIXELS_GREY = 3  // one: from 0, black, to 255
};

// Waits for the newest frame that this reader has not had, at the capture's width and height; at once if
// there is one. A frame that turns out to be broken is passed over for the next whole one.
//
//    1   here it is
//    0   the time is over: timeoutMs milliseconds; negative waits for ever
//   -1   none will come any more: refused, ended, stopped, or the arguments fit no frame; why says it
//
// facts and why may be null; they are set where there is something to say. Throws std::bad_alloc. The
// pictures are made on the calling thread.
//
// Fills frame, of which timestamp is the time of this call; untouched unless 1 is returned.
OSTREL_EXPORT int nextVideoFrame(OVideoFrameReader& reader, VideoFrame& frame, int timeoutMs,
                                 OVideoFrameFacts* facts = 0, QString* why = 0);
// Writes the picture to the caller's memory of the given size, rows stride bytes apart; what lies between the
// rows is left as it is. Undefined unless 1 is returned.
OSTREL_EXPORT int nextVideoFrame(OVideoFrameReader& reader, uint8_t* pixels, size_t bytes, int stride,
                                 OVideoPixels format, int timeoutMs, OVideoFrameFacts* facts = 0,
                                 QString* why = 0);

// A capture as from OVideoCaptureUnix::ptr() that writes no line on standard error, from its construction on.
OSTREL_EXPORT QSharedPointer<OVideoCaptureUnix> quietVideoCapture();

} // namespace ostrel

#endif
