#include "apps/viewer/control_worker.h"

#include "apps/common/control_settings.h"

namespace ostrel::apps::viewer {

ControlWorker::ControlWorker() {
    qRegisterMetaType<ControlValues>("ostrel::apps::viewer::ControlValues");
    qRegisterMetaType<ControlValues>("ControlValues");
}

void ControlWorker::follow(const QString& id) {
    notifier_.reset();
    watch_.reset();
    id_ = id;
    if (id.isEmpty())
        return;
    watch_ = std::make_unique<OVideoControlWatch>(id); // before the list, so that nothing is missed between
    if (watch_->error().isEmpty()) {
        notifier_ = std::make_unique<QSocketNotifier>(watch_->descriptor(), QSocketNotifier::Read);
        connect(notifier_.get(), &QSocketNotifier::activated, this, &ControlWorker::take);
    }
    list();
}

void ControlWorker::list() {
    QString why;
    const ControlValues controls = videoControls(id_, &why);
    emit listed(controls, why);
}

void ControlWorker::set(const ControlValues& values) {
    QString why;
    finish(setVideoControls(id_, values, &why) ? QStringList() : QStringList(why));
}

void ControlWorker::putBack() {
    finish(applyDefaults(id_));
}

// The camera may have rounded, or refused.
void ControlWorker::finish(const QStringList& refused) {
    list();
    emit done(refused);
}

void ControlWorker::take() {
    const ControlValues controls = watch_->take();
    if (!controls.isEmpty())
        emit changed(controls);
    if (watch_->error().isEmpty())
        return;
    notifier_->setEnabled(false); // it would tell for ever
    emit listed(ControlValues(), watch_->error());
}

} // namespace ostrel::apps::viewer
