// Where the system brings its own QTKit nothing can be waited for: it hands its frames to delegates alone.
#include <ostrel/native_frame.h>
#include <ostrel/next_frame.h>

namespace ostrel {

struct OVideoFrameFactsPrivate {};
struct OVideoFrameReaderPrivate {};
struct OVideoNativeFramePrivate {};

namespace {

int notHere(QString* why) {
    if (why)
        *why = QString::fromLatin1("Frames cannot be waited for with this system's own QTKit: poll for them");
    return -1;
}

} // namespace

OVideoFrameFacts::OVideoFrameFacts() : d(0) {}
OVideoFrameFacts::OVideoFrameFacts(const OVideoFrameFacts&) : d(0) {}
OVideoFrameFacts& OVideoFrameFacts::operator=(const OVideoFrameFacts& other) {
    d = other.d;
    return *this;
}
OVideoFrameFacts::~OVideoFrameFacts() {}
uint32_t OVideoFrameFacts::number() const {
    return 0;
}
uint32_t OVideoFrameFacts::sequence() const {
    return 0;
}
int64_t OVideoFrameFacts::captureTime() const {
    return 0;
}
OVideoFrameFacts::TimeSource OVideoFrameFacts::timeSource() const {
    return ARRIVAL;
}
uint64_t OVideoFrameFacts::passedOver() const {
    return 0;
}
QString OVideoFrameFacts::nativeFormat() const {
    return QString();
}
int OVideoFrameFacts::nativeWidth() const {
    return 0;
}
int OVideoFrameFacts::nativeHeight() const {
    return 0;
}

OVideoFrameReader::OVideoFrameReader(const QSharedPointer<OVideoCaptureUnix>&) : d(0) {}
OVideoFrameReader::~OVideoFrameReader() {
    (void)d; // nothing ever is behind it
}
int OVideoFrameReader::descriptor() {
    return -1;
}

OVideoNativeFrame::OVideoNativeFrame() : d(0) {}
OVideoNativeFrame::OVideoNativeFrame(const OVideoNativeFrame&) : d(0) {}
OVideoNativeFrame& OVideoNativeFrame::operator=(const OVideoNativeFrame& other) {
    d = other.d;
    return *this;
}
OVideoNativeFrame::~OVideoNativeFrame() {}
QString OVideoNativeFrame::format() const {
    return QString();
}
int OVideoNativeFrame::width() const {
    return 0;
}
int OVideoNativeFrame::height() const {
    return 0;
}
OVideoNativeFrame::Encoding OVideoNativeFrame::encoding() const {
    return BT601;
}
bool OVideoNativeFrame::isFullRange() const {
    return false;
}
OVideoNativeFrame::Fields OVideoNativeFrame::fields() const {
    return WOVEN;
}
int OVideoNativeFrame::planes() const {
    return 0;
}
size_t OVideoNativeFrame::planeOffset(int) const {
    return 0;
}
int OVideoNativeFrame::bytesPerLine(int) const {
    return 0;
}
const uint8_t* OVideoNativeFrame::data() const {
    return 0;
}
size_t OVideoNativeFrame::bytesUsed() const {
    return 0;
}
QByteArray OVideoNativeFrame::jpeg() const {
    return QByteArray();
}
OVideoFrameFacts OVideoNativeFrame::facts() const {
    return OVideoFrameFacts();
}

void listNativeOnlyCameras(bool) {}

int nextVideoFrame(OVideoFrameReader&, VideoFrame&, int, OVideoFrameFacts*, QString* why) {
    return notHere(why);
}
int nextVideoFrame(OVideoFrameReader&, uint8_t*, size_t, int, OVideoPixels, int, OVideoFrameFacts*,
                   QString* why) {
    return notHere(why);
}
int nextNativeFrame(OVideoFrameReader&, OVideoNativeFrame&, int, QString* why) {
    return notHere(why);
}

} // namespace ostrel
