// A shown window and what the tests do to it. Cameras are virtual ones that each test attaches.
#ifndef OSTREL_TESTS_VIEWER_WINDOW_FIXTURE_H
#define OSTREL_TESTS_VIEWER_WINDOW_FIXTURE_H

#include "apps/viewer/control_panel.h"
#include "apps/viewer/main_window.h"
#include "apps/viewer/picture_view.h"
#include "viewer/colours.h"

#include <ostrel/virtual_camera.h>

#include <gtest/gtest.h>

#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>
#include <QtWidgets/QLabel>
#include <QtWidgets/QStatusBar>

#include <memory>
#include <ostream>

inline void PrintTo(const QString& text, std::ostream* stream) {
    *stream << '"' << text.toStdString() << '"';
}

namespace ostrel::tests {

const int HANG = 30000; // milliseconds; nothing takes nearly that long

class WindowTest : public testing::Test {
protected:
    void open(const QString& camera = QString(), const apps::Size& size = {640, 480}) {
        apps::viewer::WindowSettings settings;
        settings.size = size;
        settings.camera = camera;
        settings.snapshotFolder = folder.path();
        window = std::make_unique<apps::viewer::MainWindow>(settings);
        window->resize(1000, 620);
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        window->activateWindow(); // keys go to the active window alone
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    }

    template <typename Condition>
    bool eventually(Condition condition) {
        return QTest::qWaitFor(condition, HANG);
    }

    apps::viewer::ControlPanel& panel() { return *window->findChild<apps::viewer::ControlPanel*>(); }
    apps::viewer::PictureView& view() { return *window->findChild<apps::viewer::PictureView*>(); }
    QString figures() { return window->findChild<QLabel*>("figures")->text(); }
    QString title() { return view().message().title; }
    bool live() { return view().hasPicture() && view().message().isEmpty(); }
    bool waitForPicture() {
        return eventually([this] { return live(); });
    }

    // The bars as they stand in the window, where its picture is.
    std::string barsInWindow() {
        const QImage grabbed = window->grab().toImage();
        const QRect place = view().pictureRect();
        return barsIn(grabbed, QRect(view().mapTo(window.get(), place.topLeft()), place.size()));
    }
    bool waitForBars(const std::string& bars) {
        return eventually([&] { return live() && barsInWindow() == bars; });
    }

    QStringList cameraNames() {
        QStringList names;
        for (int row = 0; row < panel().cameras->count(); ++row)
            names += panel().cameras->item(row)->text();
        return names;
    }
    QString selectedName() {
        const QList<QListWidgetItem*> selected = panel().cameras->selectedItems();
        return selected.isEmpty() ? QString() : selected.first()->text();
    }
    void clickCamera(const QString& name) {
        const QList<QListWidgetItem*> items = panel().cameras->findItems(name, Qt::MatchExactly);
        ASSERT_EQ(items.size(), 1);
        const QRect place = panel().cameras->visualItemRect(items.first());
        QTest::mouseClick(panel().cameras->viewport(), Qt::LeftButton, Qt::NoModifier, place.center());
    }
    // Goes to an entry with the arrow keys, as a person would.
    void select(QComboBox* box, const QString& text) {
        const int wanted = box->findText(text);
        ASSERT_GE(wanted, 0) << text.toStdString();
        while (box->currentIndex() != wanted) {
            const int before = box->currentIndex();
            QTest::keyClick(box, before < wanted ? Qt::Key_Down : Qt::Key_Up);
            ASSERT_NE(box->currentIndex(), before);
        }
    }

    QTemporaryDir folder;
    std::unique_ptr<apps::viewer::MainWindow> window;
};

} // namespace ostrel::tests

#endif
