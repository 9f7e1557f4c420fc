// Speaks with the camera about its controls, beside the window: cameras may take their time to answer.
#ifndef OSTREL_APPS_VIEWER_CONTROL_WORKER_H
#define OSTREL_APPS_VIEWER_CONTROL_WORKER_H

#include <ostrel/controls.h>

#include <QtCore/QMetaType>
#include <QtCore/QObject>
#include <QtCore/QSocketNotifier>
#include <QtCore/QStringList>

#include <memory>

Q_DECLARE_METATYPE(ostrel::OVideoControl)

namespace ostrel::apps::viewer {

using ControlValues = QList<OVideoControl>;

// Bound to the thread that it was moved to.
class ControlWorker : public QObject {
    Q_OBJECT

public:
    ControlWorker();

public slots:
    // Lists the camera's controls and follows them from now on. Empty: follows none.
    void follow(const QString& id);
    // Each is answered by done().
    void set(const ostrel::apps::viewer::ControlValues& values);
    void putBack(); // the defaults

signals:
    // why: there is none, or the camera has left; else empty.
    void listed(const ostrel::apps::viewer::ControlValues& controls, const QString& why);
    void changed(const ostrel::apps::viewer::ControlValues& controls);
    void done(const QStringList& refused);

private:
    void list();
    void finish(const QStringList& refused);
    void take();

    QString id_;
    std::unique_ptr<OVideoControlWatch> watch_;
    std::unique_ptr<QSocketNotifier> notifier_; // null where the camera does not tell
};

} // namespace ostrel::apps::viewer

#endif
