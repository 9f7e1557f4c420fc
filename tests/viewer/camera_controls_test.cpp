// The column with the camera's own controls: what it shows, sets and follows.
#include "apps/viewer/camera_controls.h"
#include "apps/viewer/control_editor.h"
#include "unit/platform/cameras/v4l2/controls_fixture.h"

#include <QtTest/QTest>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSlider>
#include <QtWidgets/QSpinBox>

#include <memory>

namespace ostrel::tests {

using apps::viewer::CameraControls;
using apps::viewer::ControlEditor;

namespace {

const int LONG = 30000; // milliseconds; nothing takes nearly that long

class ControlsColumn : public ControlsTest {
protected:
    void open() {
        plug();
        column = std::make_unique<CameraControls>();
        column->setCamera(id);
        column->resize(340, 620);
        column->show();
        ASSERT_TRUE(eventually([this] { return editor("Brightness") != nullptr; }));
    }
    void TearDown() override {
        column.reset();
        ControlsTest::TearDown();
    }
    template <typename Condition>
    static bool eventually(Condition condition) {
        return QTest::qWaitFor(condition, LONG);
    }
    ControlEditor* editor(const char* name) {
        return column->findChild<ControlEditor*>(QString::fromLatin1(name));
    }
    template <typename Part>
    Part* part(const char* name) {
        return editor(name)->findChild<Part*>();
    }
    bool becomes(uint32_t control, int64_t value) {
        return eventually([=] { return now(control) == value; });
    }

    std::unique_ptr<CameraControls> column;
};

} // namespace

TEST_F(ControlsColumn, ShowsEachControlAsItsTypeWantsIt) {
    open();
    EXPECT_EQ(part<QSlider>("Brightness")->minimum(), -64);
    EXPECT_EQ(part<QSlider>("Brightness")->maximum(), 64);
    EXPECT_EQ(part<QSpinBox>("Brightness")->value(), 0);
    EXPECT_TRUE(part<QCheckBox>("Gain, Automatic")->isChecked());
    EXPECT_EQ(part<QComboBox>("Power Line Frequency")->count(), 3);
    EXPECT_EQ(part<QComboBox>("Power Line Frequency")->currentText(), QString("50 Hz"));
    EXPECT_EQ(part<QComboBox>("Integer Menu")->itemText(1), QString("5000000000"));
    EXPECT_EQ(part<QPushButton>("Button")->text(), QString("Button"));
    EXPECT_EQ(part<QLineEdit>("Bitmask")->text(), QString("0x80000000"));
    EXPECT_EQ(part<QLineEdit>("Large")->text(), QString("5"));
    EXPECT_FALSE(editor("Privacy")->isEnabled());
    if (const char* folder = std::getenv("OSTREL_PICTURES"))
        column->grab().save(QString("%1/controls.png").arg(folder));
}

// Some cameras allow longer exposures at lower rates.
TEST_F(ControlsColumn, SlidersFollowTheLimits) {
    plug();
    ControlEditor brightness(listed(BRIGHTNESS));
    device.controls[0].maximum = device.controls[0].standard = 1000;
    plug();
    brightness.showControl(listed(BRIGHTNESS), QString());
    EXPECT_EQ(brightness.findChild<QSlider*>()->value(), 1000);
    EXPECT_EQ(brightness.findChild<QSpinBox*>()->value(), 1000);
}

TEST_F(ControlsColumn, GreysWhatIsInactiveAndSaysWhoHasTheSay) {
    open();
    EXPECT_FALSE(editor("Gain")->isEnabled());
    EXPECT_EQ(editor("Gain")->toolTip(), QString("Gain, Automatic has the say"));
    QTest::mouseClick(part<QCheckBox>("Gain, Automatic"), Qt::LeftButton, Qt::NoModifier, QPoint(8, 8));
    EXPECT_TRUE(becomes(AUTOGAIN, 0));
    EXPECT_TRUE(eventually([this] { return editor("Gain")->isEnabled(); }));
    EXPECT_EQ(editor("Gain")->toolTip(), QString());
}

TEST_F(ControlsColumn, SetsWhatTheUserChanges) {
    open();
    part<QSlider>("Brightness")->setFocus();
    QTest::keyClick(part<QSlider>("Brightness"), Qt::Key_Right);
    EXPECT_TRUE(becomes(BRIGHTNESS, 1));
    QTest::keyClick(part<QSpinBox>("Brightness"), Qt::Key_Up);
    EXPECT_TRUE(becomes(BRIGHTNESS, 2));
    EXPECT_EQ(part<QSlider>("Brightness")->value(), 2);
    QTest::keyClick(part<QComboBox>("Power Line Frequency"), Qt::Key_Down);
    EXPECT_TRUE(becomes(LINE, 3)); // two has no item
    QLineEdit* mask = part<QLineEdit>("Bitmask");
    mask->selectAll();
    QTest::keyClicks(mask, "0x10000000");
    QTest::keyClick(mask, Qt::Key_Return);
    EXPECT_TRUE(becomes(MASK, 0x10000000));
    QTest::keyClicks(part<QLineEdit>("Text"), "desk");
    QTest::keyClick(part<QLineEdit>("Text"), Qt::Key_Return);
    EXPECT_TRUE(eventually([this] { return kernel->controlText(path, TEXT) == "desk"; }));
}

TEST_F(ControlsColumn, FollowsWhatOthersChange) {
    open();
    kernel->setControl(path, BRIGHTNESS, 33);
    EXPECT_TRUE(eventually([this] { return part<QSlider>("Brightness")->value() == 33; }));
    EXPECT_EQ(part<QSpinBox>("Brightness")->value(), 33);
}

TEST_F(ControlsColumn, ShowsAfterARefusalWhatTheCameraHas) {
    open();
    QString why;
    QObject::connect(column.get(), &CameraControls::refused, column.get(),
                     [&](const QString& text) { why = text; });
    kernel->failNext(VIDIOC_S_EXT_CTRLS, EIO);
    QTest::keyClick(part<QSlider>("Brightness"), Qt::Key_Right);
    EXPECT_TRUE(eventually([&] { return !why.isEmpty(); }));
    EXPECT_EQ(why.toStdString(), "Brightness of " + where + " cannot be set: Input/output error");
    EXPECT_TRUE(eventually([this] { return part<QSlider>("Brightness")->value() == 0; }));
}

TEST_F(ControlsColumn, DoesNotWaitForASlowCameraAndLeavesOutWhatTheUserWentThrough) {
    open();
    const auto gate = kernel->hold(path, VIDIOC_S_EXT_CTRLS);
    for (int step = 0; step < 20; ++step)
        QTest::keyClick(part<QSlider>("Brightness"), Qt::Key_Right);
    gate->awaitArrivals(1);
    EXPECT_EQ(part<QSlider>("Brightness")->value(), 20);
    gate->open();
    EXPECT_TRUE(becomes(BRIGHTNESS, 20));
    EXPECT_EQ(kernel->calls(VIDIOC_S_EXT_CTRLS), 2);
}

TEST_F(ControlsColumn, DefaultsPutEverythingBack) {
    open();
    kernel->setControl(path, AUTOGAIN, 0);
    kernel->setControl(path, GAIN, 60);
    kernel->setControl(path, BRIGHTNESS, 33);
    ASSERT_TRUE(eventually([this] { return editor("Gain")->isEnabled(); }));
    QTest::mouseClick(column->findChild<QPushButton*>("defaults"), Qt::LeftButton);
    EXPECT_TRUE(becomes(BRIGHTNESS, 0));
    EXPECT_TRUE(becomes(AUTOGAIN, 1));
    EXPECT_TRUE(eventually([this] { return !editor("Gain")->isEnabled(); }));
    EXPECT_EQ(now(GAIN), 60); // the automatic one's to say
}

TEST_F(ControlsColumn, SaysThatTheCameraHasLeft) {
    open();
    unplug();
    QLabel* message = column->findChild<QLabel*>("controlsMessage");
    EXPECT_TRUE(eventually([&] { return message->isVisible(); }));
    EXPECT_EQ(message->text().toStdString(), where + " was unplugged");
    EXPECT_FALSE(column->findChild<QPushButton*>("defaults")->isEnabled());
    EXPECT_EQ(editor("Brightness"), nullptr);
}

TEST_F(ControlsColumn, HiddenLetsTheCameraSleep) {
    open();
    EXPECT_EQ(kernel->openDescriptors(), 1);
    column->hide();
    EXPECT_TRUE(eventually([this] { return kernel->openDescriptors() == 0; }));
    column->show();
    EXPECT_TRUE(eventually([this] { return kernel->openDescriptors() == 1; }));
}

} // namespace ostrel::tests
