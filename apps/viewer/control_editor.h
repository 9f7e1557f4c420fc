// What shows one control of a camera and lets it be changed: a slider, a box, a menu, a button or a line.
#ifndef OSTREL_APPS_VIEWER_CONTROL_EDITOR_H
#define OSTREL_APPS_VIEWER_CONTROL_EDITOR_H

#include <ostrel/controls.h>

#include <QtWidgets/QWidget>

#include <functional>

namespace ostrel::apps::viewer {

// Bound to the GUI's thread.
class ControlEditor : public QWidget {
    Q_OBJECT

public:
    // Of this control's type and limits, whatever is shown later.
    explicit ControlEditor(const OVideoControl& control);

    // Without the signal. Grey while it cannot be changed; `holder` is then the name of the control that has
    // the say, empty where there is none.
    void showControl(const OVideoControl& control, const QString& holder);

signals:
    void edited(const ostrel::OVideoControl& control); // by the user

private:
    void makeSlider();
    void makeBox();
    void makeMenu();
    void makeButton();
    void makeLine();
    void edit(int64_t value);

    OVideoControl control_; // as it was shown last
    std::function<void()> show_;
};

} // namespace ostrel::apps::viewer

#endif
