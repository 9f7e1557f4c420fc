// portal_camera [FRAMES] - captures from inside a sandbox (Flatpak, Snap): asks the user by the desktop's
// portal, hands the portal's connection to the library, and takes frames from the first camera that is behind
// it.
#include <ostrel/devices.h>
#include <ostrel/next_frame.h>
#include <ostrel/pipewire.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QEventLoop>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusObjectPath>
#include <QtDBus/QDBusReply>
#include <QtDBus/QDBusUnixFileDescriptor>

#include <cstdio>
#include <cstdlib>

namespace {

const char SERVICE[] = "org.freedesktop.portal.Desktop";
const char DESKTOP[] = "/org/freedesktop/portal/desktop";
const char CAMERA[] = "org.freedesktop.portal.Camera";

} // namespace

// The user's answer to one request.
class Answer : public QObject {
    Q_OBJECT

public:
    // Listens before the request is made: the answer may come at once.
    explicit Answer(const QString& token) : allowed_(false) {
        QString sender = QDBusConnection::sessionBus().baseService().mid(1);
        sender.replace('.', '_');
        QDBusConnection::sessionBus().connect(
            SERVICE, QString("/org/freedesktop/portal/desktop/request/%1/%2").arg(sender, token),
            "org.freedesktop.portal.Request", "Response", this, SLOT(came(uint, QVariantMap)));
    }
    // Takes as long as the user does.
    bool wait() {
        loop_.exec();
        return allowed_;
    }

private slots:
    void came(uint response, const QVariantMap&) {
        allowed_ = response == 0;
        loop_.quit();
    }

private:
    QEventLoop loop_;
    bool allowed_;
};

static bool askTheUser() {
    const QString token = "ostrel_example";
    Answer answer(token);
    QVariantMap options;
    options["handle_token"] = token;
    QDBusMessage request = QDBusMessage::createMethodCall(SERVICE, DESKTOP, CAMERA, "AccessCamera");
    request << options;
    const QDBusReply<QDBusObjectPath> accepted = QDBusConnection::sessionBus().call(request);
    if (!accepted.isValid()) {
        std::fprintf(stderr, "no portal: %s\n", qPrintable(accepted.error().message()));
        return false;
    }
    if (answer.wait())
        return true;
    std::fprintf(stderr, "the user does not allow it\n");
    return false;
}

static bool handOver() {
    QDBusMessage request = QDBusMessage::createMethodCall(SERVICE, DESKTOP, CAMERA, "OpenPipeWireRemote");
    request << QVariantMap();
    const QDBusReply<QDBusUnixFileDescriptor> opened = QDBusConnection::sessionBus().call(request);
    QString why = opened.error().message();
    if (opened.isValid() && ostrel::setPipeWireRemote(opened.value().fileDescriptor(), &why))
        return true;
    std::fprintf(stderr, "no connection: %s\n", qPrintable(why));
    return false;
}

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    if (!askTheUser() || !handOver())
        return 1;
    const QMap<QString, QString> cameras = ostrel::videoDevices();
    if (cameras.isEmpty()) {
        std::fprintf(stderr, "no camera\n");
        return 1;
    }
    std::printf("%s\n", qPrintable(cameras.first()));
    QSharedPointer<ostrel::OVideoCaptureUnix> capture = ostrel::quietVideoCapture();
    capture->startCapture(cameras.keys().first().toLatin1().constData(), 640, 480);
    ostrel::OVideoFrameReader reader(capture);
    ostrel::VideoFrame frame;
    QString why;
    for (int left = argc > 1 ? std::atoi(argv[1]) : 30; left > 0; --left)
        if (ostrel::nextVideoFrame(reader, frame, 10000, 0, &why) != 1) {
            std::fprintf(stderr, "no frame: %s\n", qPrintable(why));
            return 1;
        }
    std::printf("frame %u, %d x %d\n", frame.frameNumber, frame.width, frame.height);
    return 0;
}

#include "portal_camera.moc"
