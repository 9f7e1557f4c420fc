// OpenCV: pictures are written straight into the memory of a cv::Mat. Tells how much moves from one to the
// next.
#include <ostrel/devices.h>
#include <ostrel/next_frame.h>
#include <ostrel/virtual_camera.h>

#include <cstdio>
#include <opencv2/core.hpp>

namespace {

const int WIDTH = 640, HEIGHT = 480;

// 1, 0 or -1, as nextVideoFrame() answers.
int nextGrey(ostrel::OVideoFrameReader& reader, cv::Mat& picture, int timeoutMs, QString& why) {
    picture.create(HEIGHT, WIDTH, CV_8UC1); // does nothing when it is so already
    return ostrel::nextVideoFrame(reader, picture.data, picture.total() * picture.elemSize(),
                                  static_cast<int>(picture.step), ostrel::OVIDEO_PIXELS_GREY, timeoutMs, 0,
                                  &why);
}

} // namespace

int main() {
    ostrel::OVideoTestPatternCamera pattern("example-pattern", "Test pattern");
    if (ostrel::videoDevices().isEmpty())
        pattern.attach(); // no camera here, so capture from one without hardware

    const QByteArray id = ostrel::videoDevices().keys().first().toLatin1();
    QSharedPointer<ostrel::OVideoCaptureUnix> capture = ostrel::quietVideoCapture();
    capture->startCapture(id.constData(), WIDTH, HEIGHT);

    ostrel::OVideoFrameReader reader(capture);
    cv::Mat picture, before, change;
    QString why = "no frame within ten seconds";
    for (int frame = 0; frame < 30; ++frame) {
        if (nextGrey(reader, picture, 10000, why) != 1) {
            std::fprintf(stderr, "%s\n", why.toUtf8().constData());
            return 1;
        }
        if (!before.empty()) {
            cv::absdiff(picture, before, change);
            std::printf("%d pixels of %d changed\n", cv::countNonZero(change > 16),
                        static_cast<int>(change.total()));
        }
        cv::swap(picture, before); // two pictures take turns, nothing is copied
    }
    return 0;
}
