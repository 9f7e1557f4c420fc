#include "apps/viewer/camera_list.h"

#include <ostrel/devices.h>

#include <QtCore/QSignalBlocker>
#include <QtCore/QTimer>

namespace ostrel {
namespace viewer {

namespace {

// The library does not announce cameras, so it is asked. Half a second feels immediate to whoever plugs one
// in.
const int REFRESH_MILLISECONDS = 500;
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

    QTimer* timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, &CameraList::refresh);
    timer->start(REFRESH_MILLISECONDS);
}

QString CameraList::find(const QString& text) const {
    for (auto camera = cameras_.begin(); camera != cameras_.end(); ++camera)
        if (camera.key().compare(text, Qt::CaseInsensitive) == 0)
            return camera.key();
    for (auto camera = cameras_.begin(); camera != cameras_.end(); ++camera)
        if (camera.value().compare(text, Qt::CaseInsensitive) == 0)
            return camera.key();
    return QString();
}

void CameraList::mark(const QString& id) {
    const QSignalBlocker blocker(this);
    setCurrentItem(nullptr);
    clearSelection();
    for (int row = 0; row < count(); ++row)
        if (item(row)->data(ID_ROLE).toString() == id)
            setCurrentRow(row);
}

void CameraList::refresh() {
    const QMap<QString, QString> attached = videoDevices();
    if (attached == cameras_)
        return;
    cameras_ = attached;
    const QList<QListWidgetItem*> selected = selectedItems();
    const QString marked = selected.isEmpty() ? QString() : selected.first()->data(ID_ROLE).toString();
    {
        // Nobody chooses anything here: a camera that failed must not be started again by a neighbour's
        // coming.
        const QSignalBlocker blocker(this);
        clear();
        for (auto camera = cameras_.begin(); camera != cameras_.end(); ++camera) {
            QListWidgetItem* entry = new QListWidgetItem(camera.value(), this);
            entry->setData(ID_ROLE, camera.key());
            entry->setToolTip(camera.value() + "\n" + camera.key());
        }
        mark(marked);
    }
    emit changed();
}

void CameraList::choose(QListWidgetItem* item) {
    if (item)
        emit chosen(item->data(ID_ROLE).toString());
}

} // namespace viewer
} // namespace ostrel
