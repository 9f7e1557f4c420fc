// A capture as the tests in the virtual machine write it down: through the library's public interface.
#ifndef OSTREL_TESTS_VM_CAPTURE_H
#define OSTREL_TESTS_VM_CAPTURE_H

#include <ostrel/capture.h>
#include <ostrel/statistics.h>

#include <QtCore/QStringList>

#include <functional>
#include <string>

namespace ostrel::vm {

// Asks again until the condition holds. False after a bound that only ends a hang: everything in the emulated
// machine is slow, and some of it runs beside other work.
bool waitUntil(const std::function<bool()>& condition, int seconds = 120);

// Identifiers of the attached cameras, in order.
QStringList cameras();

// The identifier of the only camera; empty, with a failure, when there is none or another.
QString onlyCamera();

// Runs a command of the shell and answers its status.
int shellStatus(const std::string& command);
// The command has to succeed.
void shell(const std::string& command);
// The same with the functions of guest/cameras.sh.
void cameraShell(const std::string& command);

// One capture from start to stop. Bound to one thread.
class Capture {
public:
    Capture(const QString& camera, int width, int height);
    ~Capture() { stop(); }
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    // Waits until the session's start-up is over, whether it worked or not.
    bool waitForStartUp();
    // Waits for so many frames more than there were; false when they do not come.
    bool waitForFrames(uint32_t count);
    // Waits for a frame other than the last one, and converts it: false when none comes.
    bool waitForPicture();
    // Waits until the camera's figures say so.
    bool waitFor(const std::function<bool(const OVideoStatistics&)>& condition);
    // Waits until the stream has ended by itself.
    bool waitForEnd();

    // The newest frame, taken now; without data when there is none.
    const VideoFrame& takePicture();
    // The frame taken last.
    const VideoFrame& picture() const { return picture_; }
    OVideoStatistics statistics() const;
    uint64_t droppedFrames() const;

    void stop();

private:
    const QString camera_;
    QSharedPointer<OVideoCaptureUnix> driver_;
    VideoFrame picture_;
};

// Whether a stop returns within so many milliseconds while the camera sends nothing. setFrames(false) makes
// the camera silent, setFrames(true) ends that. A starved machine may take longer for any stop, so twice the
// time of a stop among frames will do as well, and one stop in time is enough: one that waits for a frame, or
// for a time to run out, never is.
bool stopsWithin(int limit, const QString& camera, const std::function<void(bool frames)>& setFrames);

} // namespace ostrel::vm

#endif
