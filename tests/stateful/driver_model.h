// What a capture driver must answer, as a plain table of its state.
#ifndef OSTREL_TESTS_STATEFUL_DRIVER_MODEL_H
#define OSTREL_TESTS_STATEFUL_DRIVER_MODEL_H

#include <ostrel/capture.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace stateful {

// The library said something else than the model.
struct Disagreement : std::runtime_error {
    using std::runtime_error::runtime_error;
};

void expect(bool good, const std::string& what);

struct Size {
    int width;
    int height;
};

// What became of a capture, for those who outlive it.
struct Course {
    bool mayDeliver = false; // a start found its camera
    bool over = false;       // stopped, or dropped
    int starts = 0;          // that found their camera
    std::vector<Size> sizes; // of these
};

// One driver and its model. Bound to one thread, as the driver is.
class ModelledDriver {
public:
    ModelledDriver();
    ~ModelledDriver();

    // known: a camera whose identifier matches but for letter case is attached.
    void start(const char* cameraId, Size size, bool known);
    void stop();
    void readRecord();
    void readBytes();
    void callTheRest();
    void check();

    const QSharedPointer<ostrel::OVideoCaptureUnix>& capture() const { return driver_; }
    std::shared_ptr<const Course> course() const { return course_; }

private:
    // Bytes of a frame, as an unsigned 32-bit product.
    uint32_t frameBytes() const;
    void checkFrame(const uint8_t* bytes, size_t size) const;

    QSharedPointer<ostrel::OVideoCaptureUnix> driver_;
    const std::shared_ptr<Course> course_ = std::make_shared<Course>();
    bool capturing_ = false;
    bool stoppedOnce_ = false;
    int width_ = 0;
    int height_ = 0;
    QString cameraId_;
    uint32_t lastNumber_ = 0;
    ostrel::VideoFrame record_;
    std::vector<unsigned char> bytes_;
};

} // namespace stateful

#endif
