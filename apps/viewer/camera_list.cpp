#include "apps/viewer/camera_list.h"

#include <ostrel/devices.h>

#include <QtCore/QSignalBlocker>
#include <QtCore/QSocketNotifier>
#include <QtGui/QTextDocument>

namespace ostrel::apps::viewer {

namespace {

const int ID_ROLE = Qt::UserRole;

} // namespace

CameraList::CameraList(QWidget* parent) : QListWidget(parent) {
    setObjectName("cameras");
    setAccessibleName("Cameras");
    setTextElideMode(Qt::ElideMiddle);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSpacing(1);
    // Not by the current item: Qt makes the first one current when the list gets the focus.
    connect(this, &QListWidget::itemSelectionChanged, this, [this] { choose(selectedItems().value(0)); });
    connect(this, &QListWidget::itemClicked, this, &CameraList::choose);
    connect(this, &QListWidget::itemActivated, this, &CameraList::choose);

    QSocketNotifier* notifier = new QSocketNotifier(monitor_.descriptor(), QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &CameraList::refresh);
}

void CameraList::mark(const QString& id) {
    const QSignalBlocker blocker(this);
    setCurrentItem(nullptr);
    clearSelection();
    for (int row = 0; row < count(); ++row)
        if (item(row)->data(ID_ROLE).toString() == id)
            setCurrentRow(row);
}

// Listed are also the cameras that may not be opened: who chooses one is told why.
void CameraList::refresh() {
    const QList<OVideoDeviceChange> changes = monitor_.take();
    setCameras(videoDevices());
    for (const OVideoDeviceChange& change : changes)
        if (change.kind() == OVideoDeviceChange::ADDED)
            emit pluggedIn(change.uniqueID());
}

void CameraList::setCameras(const QMap<QString, QString>& attached) {
    if (attached == cameras_)
        return;
    cameras_ = attached;
    const QList<QListWidgetItem*> selected = selectedItems();
    const QString marked = selected.isEmpty() ? QString() : selected.first()->data(ID_ROLE).toString();
    {
        // Nobody chooses anything here: a camera that failed must not be started again by a neighbour's
        // coming.
        const QSignalBlocker blocker(this);
        fill();
        mark(marked);
    }
    emit changed();
}

// Cameras of one name are told apart by their identifiers, on a second line.
void CameraList::fill() {
    clear();
    const QStringList names = cameras_.values();
    for (auto camera = cameras_.begin(); camera != cameras_.end(); ++camera) {
        const QString both = camera.value() + "\n" + camera.key();
        const bool alone = names.count(camera.value()) == 1;
        QListWidgetItem* entry = new QListWidgetItem(alone ? camera.value() : both, this);
        entry->setData(ID_ROLE, camera.key());
        entry->setToolTip(Qt::convertFromPlainText(both)); // a camera may have any name
    }
}

void CameraList::choose(QListWidgetItem* item) {
    if (item)
        emit chosen(item->data(ID_ROLE).toString());
}

} // namespace ostrel::apps::viewer
