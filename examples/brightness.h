// A piece of a client, written so that it can be tested: how bright is the room that a camera sees?
#ifndef EXAMPLE_BRIGHTNESS_H
#define EXAMPLE_BRIGHTNESS_H

#include <ostrel/capture.h>

class Brightness {
public:
    explicit Brightness(const QString& cameraId) : capture_(ostrel::OVideoCaptureUnix::ptr()) {
        capture_->startCapture(cameraId.toLatin1().constData(), 320, 240);
    }

    // The mean of the newest frame's green bytes, 0 to 255; -1 before the first frame.
    int value() {
        capture_->selfVideoFrame(frame_);
        if (frame_.data.empty())
            return -1;
        uint64_t sum = 0;
        for (size_t i = 1; i < frame_.data.size(); i += 4)
            sum += frame_.data[i];
        return static_cast<int>(sum / (frame_.data.size() / 4));
    }

private:
    QSharedPointer<ostrel::OVideoCaptureUnix> capture_;
    ostrel::VideoFrame frame_;
};

#endif
