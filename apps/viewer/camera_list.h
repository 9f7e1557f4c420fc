// The attached cameras, as a list that follows plugging.
#ifndef OSTREL_APPS_VIEWER_CAMERA_LIST_H
#define OSTREL_APPS_VIEWER_CAMERA_LIST_H

#include "apps/common/camera_match.h"

#include <ostrel/device_monitor.h>

#include <QtWidgets/QListWidget>

namespace ostrel::apps::viewer {

// Bound to the GUI's thread.
class CameraList : public QListWidget {
    Q_OBJECT

public:
    explicit CameraList(QWidget* parent = nullptr);

    bool isAttached(const QString& id) const { return cameras_.contains(id); }
    QString nameOf(const QString& id) const { return cameras_.value(id); }
    // Those that a text stands for, as meantCameras() says.
    QStringList find(const QString& text, QString& why) const { return meantCameras(cameras_, text, why); }
    QString first() const { return cameras_.isEmpty() ? QString() : cameras_.firstKey(); }

    // Marks a camera without the signal; an identifier that is not attached marks none.
    void mark(const QString& id);

public slots:
    void refresh(); // asks the library; it is also done whenever something may have changed

signals:
    void changed();                    // cameras came or went
    void pluggedIn(const QString& id); // also one that was pulled out and is back, so that none is changed
    void chosen(const QString& id);    // by the user, possibly the one that is marked already

private:
    void choose(QListWidgetItem* item);
    void setCameras(const QMap<QString, QString>& attached);
    void fill();

    OVideoDeviceMonitor monitor_;
    QMap<QString, QString> cameras_; // identifier -> name
};

} // namespace ostrel::apps::viewer

#endif
