// Where the system brings its own QTKit nobody lets a program set anything of a camera.
#include <ostrel/controls.h>

namespace ostrel {

struct OVideoControlPrivate {};
struct OVideoControlWatchPrivate {};

namespace {

QString notHere() {
    return QString::fromLatin1("Cameras have no controls with this system's own QTKit");
}

void tell(QString* why) {
    if (why)
        *why = notHere();
}

} // namespace

OVideoControl::OVideoControl(uint32_t) : d(0) {}
OVideoControl::OVideoControl(const OVideoControl& other) : d(other.d) {}
OVideoControl& OVideoControl::operator=(const OVideoControl& other) {
    d = other.d;
    return *this;
}
OVideoControl::~OVideoControl() {}
uint32_t OVideoControl::id() const {
    return 0;
}
QString OVideoControl::name() const {
    return QString();
}
OVideoControl::Type OVideoControl::type() const {
    return INTEGER;
}
int64_t OVideoControl::minimum() const {
    return 0;
}
int64_t OVideoControl::maximum() const {
    return 0;
}
int64_t OVideoControl::step() const {
    return 0;
}
int64_t OVideoControl::defaultValue() const {
    return 0;
}
QMap<int, QString> OVideoControl::items() const {
    return QMap<int, QString>();
}
bool OVideoControl::hasValue() const {
    return false;
}
int64_t OVideoControl::value() const {
    return 0;
}
QString OVideoControl::text() const {
    return QString();
}
bool OVideoControl::isInactive() const {
    return false;
}
uint32_t OVideoControl::automaticControl() const {
    return 0;
}
bool OVideoControl::isReadOnly() const {
    return false;
}
bool OVideoControl::isVolatile() const {
    return false;
}
bool OVideoControl::isGrabbed() const {
    return false;
}
void OVideoControl::setValue(int64_t) {}
void OVideoControl::setText(const QString&) {}

QList<OVideoControl> videoControls(const QString&, QString* why) {
    tell(why);
    return QList<OVideoControl>();
}

bool setVideoControls(const QString&, const QList<OVideoControl>&, QString* why) {
    tell(why);
    return false;
}

OVideoControlWatch::OVideoControlWatch(const QString&) : d(0) {}
OVideoControlWatch::~OVideoControlWatch() {
    (void)d; // nothing ever is behind it
}
QString OVideoControlWatch::error() const {
    return notHere();
}
int OVideoControlWatch::descriptor() const {
    return -1;
}
int OVideoControlWatch::wait(int) {
    return -1;
}
QList<OVideoControl> OVideoControlWatch::take() {
    return QList<OVideoControl>();
}

} // namespace ostrel
