// The camera's own bytes, unconverted (over the system's own QTKit the call answers -1).
#ifndef OSTREL_NATIVE_FRAME_H
#define OSTREL_NATIVE_FRAME_H

#include <ostrel/export.h>
#include <ostrel/next_frame.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <stddef.h>
#include <stdint.h>

namespace ostrel {

struct OVideoNativeFramePrivate;

// A picture as the camera delivered it: a copy, for which no buffer of the driver is held. Filled again it
// uses its memory again. A value: copies are independent, each is bound to one thread at a time.
class OSTREL_EXPORT OVideoNativeFrame {
public:
    // How Y, U and V stand for colours; of formats without them it means nothing.
    enum Encoding { BT601 = 1, BT709 = 2, BT2020 = 3 };
    // In which order the rows of each plane are.
    enum Fields {
        WOVEN = 0,       // from top to bottom
        TOP_FIRST = 1,   // the rows 0, 2, 4, ..., then the rows 1, 3, 5, ...
        BOTTOM_FIRST = 2 // the rows 1, 3, 5, ..., then the rows 0, 2, 4, ...
    };

    OVideoNativeFrame();
    OVideoNativeFrame(const OVideoNativeFrame& other);
    OVideoNativeFrame& operator=(const OVideoNativeFrame& other);
    ~OVideoNativeFrame();

    // Four characters, blanks at the end left out, and pixels. Empty and 0 before it is filled. Big-endian
    // formats that have the characters of another end with -BE: "Y16-BE".
    QString format() const;
    int width() const;
    int height() const;
    Encoding encoding() const;
    bool isFullRange() const; // Y from 0 to 255 instead of 16 to 235
    Fields fields() const;

    // 1 to 3, in the format's order. Where each begins, and bytes from row to row (0 of compressed pictures).
    int planes() const;
    size_t planeOffset(int plane) const;
    int bytesPerLine(int plane) const;
    // All planes: so many bytes are used.
    const uint8_t* data() const;
    size_t bytesUsed() const;
    // A picture of MJPG for programs that read files: with the Huffman tables that most cameras leave out and
    // the end marker, else as it came. Empty of other formats, and when its headers cannot be read.
    QByteArray jpeg() const;

    OVideoFrameFacts facts() const;

private:
    friend struct OVideoNativeFramePrivate;
    OVideoNativeFramePrivate* d;
};

// As nextVideoFrame(): 1, 0 or -1; frame is untouched unless 1 is returned. The reader's place is one for
// both: what it got here it does not get there. Bytes that do not decode are handed out as they are.
OSTREL_EXPORT int nextNativeFrame(OVideoFrameReader& reader, OVideoNativeFrame& frame, int timeoutMs,
                                  QString* why = 0);

// Whether cameras whose formats all have no picture here, such as raw Bayer, depth or H.264, are listed from
// now on, in this process; at first they are not. They are captured from as others are, with
// nextNativeFrame() alone: who polls gets nothing, and nextVideoFrame() answers -1. Any thread may call.
OSTREL_EXPORT void listNativeOnlyCameras(bool list);

} // namespace ostrel

#endif
