// Where the system brings its own QTKit nobody tells of a camera's modes, and it takes the one that it likes.
#include <ostrel/modes.h>

namespace ostrel {

struct OVideoModePrivate {};

namespace {

void tell(QString* why) {
    if (why)
        *why = QString::fromLatin1("Cameras do not tell of their modes with this system's own QTKit");
}

} // namespace

OVideoMode::OVideoMode() : d(0) {}
OVideoMode::OVideoMode(const OVideoMode&) : d(0) {}
OVideoMode& OVideoMode::operator=(const OVideoMode& other) {
    d = other.d;
    return *this;
}
OVideoMode::~OVideoMode() {}
QString OVideoMode::format() const {
    return QString();
}
bool OVideoMode::hasPicture() const {
    return true;
}
int OVideoMode::width() const {
    return 0;
}
int OVideoMode::height() const {
    return 0;
}
int OVideoMode::leastWidth() const {
    return 0;
}
int OVideoMode::leastHeight() const {
    return 0;
}
int OVideoMode::stepWidth() const {
    return 0;
}
int OVideoMode::stepHeight() const {
    return 0;
}
uint32_t OVideoMode::intervalNumerator() const {
    return 0;
}
uint32_t OVideoMode::intervalDenominator() const {
    return 0;
}
uint32_t OVideoMode::longestNumerator() const {
    return 0;
}
uint32_t OVideoMode::longestDenominator() const {
    return 0;
}
double OVideoMode::framesPerSecond() const {
    return 0;
}
void OVideoMode::setFormat(const QString&) {}
void OVideoMode::setSize(int, int) {}
void OVideoMode::setInterval(uint32_t, uint32_t) {}

QList<OVideoMode> videoModes(const QString&, QString* why) {
    tell(why);
    return QList<OVideoMode>();
}

bool requestVideoMode(const QString&, const OVideoMode&, QString* why) {
    tell(why);
    return false;
}

OVideoMode requestedVideoMode(const QString&) {
    return OVideoMode();
}

} // namespace ostrel
