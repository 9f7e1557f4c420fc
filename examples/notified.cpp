// A client with Qt's event loop: each frame is a notification, and nothing runs in between.
#include <ostrel/devices.h>
#include <ostrel/next_frame.h>
#include <ostrel/virtual_camera.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>
#include <QtCore/QSocketNotifier>
#include <QtCore/QTimer>

#include <cstdio>
#include <vector>

namespace {

const int WIDTH = 640, HEIGHT = 480;

// Connecting to activated() does as well; overriding event() needs no moc.
class Frames : public QSocketNotifier {
public:
    Frames(ostrel::OVideoFrameReader& reader, int wanted)
        : QSocketNotifier(reader.descriptor(), Read), reader_(reader), grey_(WIDTH * HEIGHT), left_(wanted) {}
    int left() const { return left_; }

protected:
    bool event(QEvent* event) {
        if (event->type() != QEvent::SockAct)
            return QSocketNotifier::event(event);
        takeFrame();
        return true;
    }

private:
    void takeFrame() {
        ostrel::OVideoFrameFacts facts;
        QString why;
        const int result = ostrel::nextVideoFrame(reader_, &grey_[0], grey_.size(), WIDTH,
                                                  ostrel::OVIDEO_PIXELS_GREY, 0, &facts, &why);
        if (result == 1) {
            std::printf("frame %u of %s, captured at %.3f s, %d in the middle\n",
                        static_cast<unsigned>(facts.number()), facts.nativeFormat().toUtf8().constData(),
                        static_cast<double>(facts.captureTime()) * 1e-9,
                        grey_[HEIGHT / 2 * WIDTH + WIDTH / 2]);
            --left_;
        } else if (result < 0) {
            std::fprintf(stderr, "no more frames: %s\n", why.toUtf8().constData());
        }
        if (result < 0 || left_ == 0) {
            setEnabled(false);
            QCoreApplication::quit();
        }
    }

    ostrel::OVideoFrameReader& reader_;
    std::vector<uint8_t> grey_; // pictures are written straight into it
    int left_;
};

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    ostrel::OVideoTestPatternCamera pattern("example-pattern", "Test pattern");
    if (ostrel::videoDevices().isEmpty())
        pattern.attach(); // no camera here, so capture from one without hardware

    const QByteArray id = ostrel::videoDevices().keys().first().toLatin1();
    QSharedPointer<ostrel::OVideoCaptureUnix> capture = ostrel::quietVideoCapture();
    capture->startCapture(id.constData(), WIDTH, HEIGHT);
    ostrel::OVideoFrameReader reader(capture);
    Frames frames(reader, 30);
    QTimer::singleShot(10000, &application, SLOT(quit()));
    application.exec();
    return frames.left() == 0 ? 0 : 1;
}
