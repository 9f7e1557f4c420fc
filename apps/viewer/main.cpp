// ostrel-viewer: a window with the live picture of a camera.
#include "apps/common/added_cameras.h"
#include "apps/common/failure.h"
#include "apps/viewer/main_window.h"
#include "apps/viewer/options.h"
#include "apps/viewer/snapshot.h"

#include <QtWidgets/QApplication>

#include <cstdio>

using namespace ostrel::apps;
using namespace ostrel::apps::viewer;

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

// Cameras first: a file that cannot be played is said without a display.
int show(const Options& options, int argc, char** argv) {
    const AddedCameras added(options.testCamera, options.play, false, options.size);
    QApplication application(argc, argv);
    QApplication::setApplicationDisplayName("Ostrel Viewer");
    WindowSettings settings;
    settings.camera = options.camera.isEmpty() ? added.identifiers().value(0) : options.camera;
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

} // namespace

int main(int argc, char** argv) {
    const Request request = readCommandLine(argc, argv);
    if (!request.options)
        return say(request.answer, request.exitCode);
    try {
        return show(*request.options, argc, argv);
    } catch (const Failure& failure) {
        return say(QString("ostrel-viewer: %1\n").arg(failure.what()), failure.code());
    }
}
