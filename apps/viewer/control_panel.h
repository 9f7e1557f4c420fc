// The column of controls beside the picture.
#ifndef OSTREL_APPS_VIEWER_CONTROL_PANEL_H
#define OSTREL_APPS_VIEWER_CONTROL_PANEL_H

#include "apps/common/size.h"
#include "apps/viewer/camera_list.h"

#include <QtWidgets/QCheckBox>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QPushButton>

#include <optional>

namespace ostrel::apps::viewer {

// Lays the controls out and reads them; what they do is the window's matter. Bound to the GUI's thread.
class ControlPanel : public QWidget {
    Q_OBJECT

public:
    // captured: the size to begin with.
    explicit ControlPanel(const Size& captured);

    CameraList* const cameras;
    QComboBox* const size;    // one entry for each VIDEO_QUALITY, and one for another size to begin with
    QComboBox* const scaleTo; // one for each VIDEO_QUALITY, after one for "as captured"
    QComboBox* const method;  // one entry for each ScaleMethod
    QCheckBox* const mirror;
    QPushButton* const controls; // down while the camera's own controls are shown
    QPushButton* const snapshot;
    QPushButton* const fullScreen;

    Size captureSize() const;
    std::optional<VIDEO_QUALITY> scaleLevel() const; // none: as captured
    ScaleMethod scaleMethod() const;

private:
    void fill(const Size& captured);
    void enable();
    void arrange();
};

} // namespace ostrel::apps::viewer

#endif
