// A piece of a client, written so that it can be tested: how bright is the room that a camera sees?
#ifndef EXAMPLE_BRIGHTNESS_H
#define EXAMPLE_BRIGHTNESS_H

#include <ostrel/capture.h>

class Brightness {
public:
    explicit Brightness(const QString& cameraId) : m_capture(ostrel::OVideoCaptureUnix::ptr()) {
        m_capture->startCapture(cameraId.toLatin1().constData(), 320, 240);
    }

    // The mean of the newest frame's green bytes, 0 to 255; -1 before the first frame.
    int value() {
        m_capture->selfVideoFrame(m_frame);
        if (m_frame.data.empty())
            return -1;
        uint64_t sum = 0;
        for (size_t i = 1; i < m_frame.data.size(); i += 4)
            sum += m_frame.data[i];
        return static_cast<int>(sum / (m_frame.data.size() / 4));
    }

private:
    QSharedPointer<ostrel::OVideoCaptureUnix> m_capture;
    ostrel::VideoFrame m_frame;
};

#endif
