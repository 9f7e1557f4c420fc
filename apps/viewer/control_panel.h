// The column of controls beside the picture.
#ifndef OSTREL_APPS_VIEWER_CONTROL_PANEL_H
#define OSTREL_APPS_VIEWER_CONTROL_PANEL_H

#include "apps/viewer/camera_list.h"

#include <ostrel/processing.h>

#include <QtWidgets/QCheckBox>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QPushButton>

#include <optional>

namespace ostrel {
namespace viewer {

// Lays the controls out and reads them; what they do is the window's matter. Bound to the GUI's thread.
class ControlPanel : public QWidget {
    Q_OBJECT

public:
    explicit ControlPanel(QWidget* parent = nullptr);

    CameraList* const cameras;
    QComboBox* const size;    // one entry for each VIDEO_QUALITY
    QComboBox* const scaleTo; // the same, after one for "as captured"
    QComboBox* const method;  // one entry for each ScaleMethod
    QCheckBox* const mirror;
    QPushButton* const snapshot;
    QPushButton* const fullScreen;

    VIDEO_QUALITY captureLevel() const;
    std::optional<VIDEO_QUALITY> scaleLevel() const; // none: as captured
    ScaleMethod scaleMethod() const;

private:
    void fill();
    void arrange();
};

} // namespace viewer
} // namespace ostrel

#endif
