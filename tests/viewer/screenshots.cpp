// viewer_screenshots FOLDER - draws the window in its states and saves the pictures: viewer.png, which the
// documentation shows; viewer-no-camera.png; viewer-controls.png; viewer-gone.png.
#include "apps/viewer/control_panel.h"
#include "apps/viewer/main_window.h"
#include "apps/viewer/picture_view.h"
#include "viewer/virtual_screen.h"

#include <ostrel/virtual_camera.h>

#include <QtCore/QDir>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QSlider>

#include <cstdio>
#include <cstdlib>

using namespace ostrel;

namespace {

const int HANG = 30000;

void check(bool good, const char* what) {
    if (good)
        return;
    std::fprintf(stderr, "viewer_screenshots: %s\n", what);
    std::exit(1);
}

class Photographer {
public:
    explicit Photographer(const QString& folder) : folder_(folder) {
        window_.resize(940, 560);
        window_.show();
        check(QTest::qWaitForWindowExposed(&window_), "the window does not appear");
    }

    template <typename Condition>
    void saveWhen(const char* name, Condition condition) {
        check(QTest::qWaitFor([&] { return condition(view()); }, HANG), name);
        check(window_.grab().save(QDir(folder_).filePath(name)), "cannot save the picture");
    }

    void toggleControls() { window_.findChild<apps::viewer::ControlPanel*>()->controls->click(); }

private:
    apps::viewer::PictureView& view() { return *window_.findChild<apps::viewer::PictureView*>(); }

    QString folder_;
    apps::viewer::MainWindow window_{apps::viewer::WindowSettings()};
};

} // namespace

int main(int argc, char** argv) {
    check(argc == 2, "name the folder for the pictures");
    const tests::VirtualScreen screen(1280, 900);
    check(screen.runs(), "Xvfb (Debian: xvfb) cannot be started");
    qputenv("DISPLAY", screen.display());
    qputenv("QT_QPA_PLATFORM", "xcb");
    const QApplication application(argc, argv);

    Photographer photographer(argv[1]);
    OVideoTestPatternCamera camera("ostrel-test-pattern", "Test pattern");
    OVideoTestPatternCamera other("ostrel-test-pattern-2", "Another test pattern");
    photographer.saveWhen("viewer-no-camera.png", [](apps::viewer::PictureView& view) {
        return view.message() == apps::viewer::noCamera();
    });
    camera.attach();
    other.attach();
    int pictures = 0; // enough for the rate to be known
    photographer.saveWhen("viewer.png", [&](apps::viewer::PictureView& view) {
        return view.hasPicture() && view.message().isEmpty() && ++pictures > 300;
    });
    photographer.toggleControls();
    photographer.saveWhen("viewer-controls.png", [](apps::viewer::PictureView& view) {
        return view.window()->findChild<QSlider*>() != nullptr; // the camera has told of them
    });
    photographer.toggleControls();
    camera.detach();
    photographer.saveWhen("viewer-gone.png", [](apps::viewer::PictureView& view) {
        return view.message().title.contains("gone");
    });
    return 0;
}
