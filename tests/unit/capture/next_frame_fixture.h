// Captures whose frames are waited for.
#ifndef OSTREL_TESTS_UNIT_CAPTURE_NEXT_FRAME_FIXTURE_H
#define OSTREL_TESTS_UNIT_CAPTURE_NEXT_FRAME_FIXTURE_H

#include <ostrel/native_frame.h>
#include <ostrel/next_frame.h>

#include "base/qt_text.h"
#include "support/camera_test.h"

#include <memory>
#include <poll.h>

namespace ostrel::support {

class NextFrameTest : public CameraTest {
protected:
    static constexpr int LONG = 20000; // milliseconds that no wait takes unless it fails

    using Capture = QSharedPointer<OVideoCaptureUnix>;

    static Capture started(const char* identifier, int width = 16, int height = 8) {
        const Capture capture = quietVideoCapture();
        capture->startCapture(identifier, width, height);
        capture->wait();
        return capture;
    }
    static bool isReadable(OVideoFrameReader& reader, int timeoutMs = 0) {
        pollfd one = {reader.descriptor(), POLLIN, 0};
        return ::poll(&one, 1, timeoutMs) == 1;
    }
    // Why no frame will come; empty when one came or may come.
    static std::string reason(OVideoFrameReader& reader, int timeoutMs = LONG) {
        VideoFrame frame;
        QString why;
        return nextVideoFrame(reader, frame, timeoutMs, nullptr, &why) < 0 ? utf8Of(why) : std::string();
    }
    static bool mentions(const std::string& text, const std::string& word) {
        return text.find(word) != std::string::npos;
    }
};

} // namespace ostrel::support

#endif
