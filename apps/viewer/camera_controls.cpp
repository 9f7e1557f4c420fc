#include "apps/viewer/camera_controls.h"

#include "apps/viewer/control_editor.h"

#include <QtWidgets/QFormLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QVBoxLayout>

#include <utility>

namespace ostrel::apps::viewer {

namespace {

const int WIDTH = 340;

} // namespace

CameraControls::CameraControls()
    : message_(new QLabel), area_(new QScrollArea), defaults_(new QPushButton("&Defaults")) {
    setFixedWidth(WIDTH);
    message_->setTextFormat(Qt::PlainText); // whatever the camera is called
    message_->setWordWrap(true);
    message_->setObjectName("controlsMessage");
    area_->setWidgetResizable(true);
    area_->setFrameShape(QFrame::NoFrame);
    area_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    defaults_->setObjectName("defaults");
    defaults_->setToolTip("Put everything back that can be, automatic modes first");
    QVBoxLayout* column = new QVBoxLayout(this);
    column->addWidget(message_);
    column->addWidget(area_, 1);
    column->addWidget(defaults_);

    auto* worker = new ControlWorker;
    worker->moveToThread(&thread_);
    connect(&thread_, &QThread::finished, worker, &QObject::deleteLater);
    connect(this, &CameraControls::wantsToFollow, worker, &ControlWorker::follow);
    connect(this, &CameraControls::wantsToSet, worker, &ControlWorker::set);
    connect(this, &CameraControls::wantsToPutBack, worker, &ControlWorker::putBack);
    connect(worker, &ControlWorker::listed, this, &CameraControls::showList);
    connect(worker, &ControlWorker::changed, this, &CameraControls::showChanges);
    connect(worker, &ControlWorker::done, this, &CameraControls::finished);
    connect(defaults_, &QPushButton::clicked, this, [this] {
        pending_.clear();
        defaultsWanted_ = true;
        send();
    });
    thread_.start();
    showList(ControlValues(), QString());
}

CameraControls::~CameraControls() {
    thread_.quit();
    thread_.wait();
}

void CameraControls::setCamera(const QString& id) {
    const bool known = id == id_ && !controls_.isEmpty();
    id_ = id;
    if (isVisible() && !known)
        follow();
}

void CameraControls::showEvent(QShowEvent*) {
    follow();
}

void CameraControls::hideEvent(QHideEvent*) {
    emit wantsToFollow(QString());
}

void CameraControls::follow() {
    pending_.clear();
    defaultsWanted_ = false;
    showList(ControlValues(), QString());
    emit wantsToFollow(id_);
}

void CameraControls::showList(const ControlValues& controls, const QString& why) {
    QList<uint32_t> ids;
    for (const OVideoControl& control : controls)
        ids.append(control.id());
    bool same = controls.size() == editors_.size();
    for (const uint32_t id : ids)
        same = same && editors_.contains(id);
    controls_.clear();
    for (const OVideoControl& control : controls)
        controls_[control.id()] = control;
    if (!same)
        build(controls);
    message_->setText(why);
    message_->setVisible(!why.isEmpty());
    defaults_->setEnabled(!controls.isEmpty());
    showAll();
}

// A row for each, in the driver's order.
void CameraControls::build(const ControlValues& controls) {
    editors_.clear();
    QWidget* rows = new QWidget;
    QFormLayout* form = new QFormLayout(rows);
    form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setContentsMargins(0, 0, 6, 0);
    for (const OVideoControl& control : controls) {
        ControlEditor* editor = new ControlEditor(control);
        editor->setObjectName(control.name());
        connect(editor, &ControlEditor::edited, this, &CameraControls::edited);
        editors_[control.id()] = editor;
        form->addRow(control.type() == OVideoControl::BUTTON ? QString() : control.name(), editor);
    }
    area_->setWidget(rows); // takes the one before away
}

void CameraControls::showChanges(const ControlValues& controls) {
    for (const OVideoControl& control : controls)
        if (controls_.contains(control.id()) && !sent_.contains(control.id()))
            controls_[control.id()] = control;
    showAll();
}

void CameraControls::showAll() {
    for (const OVideoControl& control : std::as_const(controls_)) {
        ControlEditor* editor = editors_[control.id()];
        if (pending_.contains(control.id()) || sent_.contains(control.id()))
            continue;
        editor->showControl(control, controls_.value(control.automaticControl()).name());
        if (QWidget* label = static_cast<QFormLayout*>(area_->widget()->layout())->labelForField(editor))
            label->setEnabled(editor->isEnabled());
    }
}

void CameraControls::edited(const OVideoControl& control) {
    pending_[control.id()] = control;
    send();
}

void CameraControls::send() {
    if (busy_ || (pending_.isEmpty() && !defaultsWanted_))
        return;
    busy_ = true;
    if (defaultsWanted_) {
        defaultsWanted_ = false;
        emit wantsToPutBack();
        return;
    }
    sent_.swap(pending_);
    emit wantsToSet(sent_.values());
}

void CameraControls::finished(const QStringList& refusals) {
    busy_ = false;
    sent_.clear();
    showAll();
    if (!refusals.isEmpty())
        emit refused(refusals.join("; "));
    send();
}

} // namespace ostrel::apps::viewer
