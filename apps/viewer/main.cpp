// ostrel-viewer: a window with the live picture of a camera.
#include "apps/viewer/added_cameras.h"
#include "apps/viewer/main_window.h"
#include "apps/viewer/options.h"
#include "apps/viewer/snapshot.h"

#include <QtWidgets/QApplication>

#include <cstdio>

using namespace ostrel::viewer;

namespace {

// In an application of its own: help, version and refusals need no display.
Request readCommandLine(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    return parseCommandLine(QCoreApplication::arguments());
}

int say(const QString& text, int exitCode) {
    std::fputs(qPrintable(text), exitCode == 0 ? stdout : stderr);
    return exitCode;
}

} // namespace

int main(int argc, char** argv) {
    const Request request = readCommandLine(argc, argv);
    if (!request.options)
        return say(request.answer, request.exitCode);
    const Options& options = *request.options;

    const AddedCameras added(options);
    if (!added.error().isEmpty())
        return say(QString("ostrel-viewer: cannot play '%1': %2\n").arg(options.play, added.error()),
                   EXIT_FILE);

    QApplication application(argc, argv);
    QApplication::setApplicationDisplayName("Ostrel Viewer");
    WindowSettings settings;
    settings.camera = options.camera.isEmpty() ? added.first() : options.camera;
    settings.size = options.size;
    settings.snapshotFolder = picturesFolder();
    MainWindow window(settings);
    window.resize(window.sizeHint());
    if (options.fullScreen)
        window.setFullScreen(true);
    else
        window.show();
    return QApplication::exec();
}
