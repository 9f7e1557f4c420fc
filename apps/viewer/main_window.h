// The window: cameras and settings on the left, the live picture on the right, figures below.
#ifndef OSTREL_APPS_VIEWER_MAIN_WINDOW_H
#define OSTREL_APPS_VIEWER_MAIN_WINDOW_H

#include "apps/viewer/capture_source.h"
#include "apps/viewer/picture_scaler.h"

#include <QtWidgets/QMainWindow>

class QAction;
class QLabel;

namespace ostrel::apps::viewer {

class CameraControls;
class ControlPanel;
class PictureView;

struct WindowSettings {
    QString camera; // which to begin with, as meantCameras() takes it; empty: the first
    Size size = sizeOf(VIDEO_QUALITY_SD);
    QString snapshotFolder = "."; // has to exist
};

// Bound to the GUI's thread, which also takes the frames.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(const WindowSettings& settings);

public slots:
    void chooseCamera(const QString& id);
    void takeSnapshot();
    void setFullScreen(bool fullScreen);

private:
    void connectControls();
    void addShortcuts();
    void startLooking();

    void camerasChanged();
    void takeUpAgain(const QString& id);
    void restart();
    void lookAtCamera();
    void showNewest();
    void showState();
    void showFigures();

    WindowSettings settings_;
    QString cameraId_;  // the chosen one, attached or not; empty: none yet
    QStringList found_; // what the camera asked for stands for, until one is chosen
    QString whyNone_;
    QString cameraName_; // kept for when it is gone
    CaptureSource source_;
    PictureScaler scaler_;

    ControlPanel* panel_;
    PictureView* view_;
    CameraControls* controls_;
    QLabel* figures_;
    QAction* leaveFullScreen_;
    QRect windowed_; // to where the window returns from full screen
};

} // namespace ostrel::apps::viewer

#endif
