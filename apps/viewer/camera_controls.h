// The column with the camera's own controls.
#ifndef OSTREL_APPS_VIEWER_CAMERA_CONTROLS_H
#define OSTREL_APPS_VIEWER_CAMERA_CONTROLS_H

#include "apps/viewer/control_worker.h"

#include <QtCore/QMap>
#include <QtCore/QThread>
#include <QtWidgets/QWidget>

class QFormLayout;
class QLabel;
class QPushButton;
class QScrollArea;

namespace ostrel::apps::viewer {

class ControlEditor;

// Follows the chosen camera while it is shown, also what others change. Never waits for the camera: values
// that the user goes through while it is busy are left out. Bound to the GUI's thread.
class CameraControls : public QWidget {
    Q_OBJECT

public:
    CameraControls();
    ~CameraControls() override;

    void setCamera(const QString& id); // empty: none

signals:
    void refused(const QString& why);
    // For the worker, on its thread.
    void wantsToFollow(const QString& id);
    void wantsToSet(const ostrel::apps::viewer::ControlValues& values);
    void wantsToPutBack();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void follow();
    void showList(const ControlValues& controls, const QString& why);
    void build(const ControlValues& controls);
    void showChanges(const ControlValues& controls);
    void showAll();
    void edited(const OVideoControl& control);
    void finished(const QStringList& refusals);
    void send();

    QThread thread_;
    QString id_;
    QMap<uint32_t, OVideoControl> controls_; // as the camera has them
    QMap<uint32_t, ControlEditor*> editors_;
    QMap<uint32_t, OVideoControl> pending_; // edited, not yet sent
    QMap<uint32_t, OVideoControl> sent_;    // and not yet done: a list with what became of it will come
    bool busy_ = false;                     // the worker sets something
    bool defaultsWanted_ = false;
    QLabel* message_;
    QScrollArea* area_;
    QPushButton* defaults_;
};

} // namespace ostrel::apps::viewer

#endif
