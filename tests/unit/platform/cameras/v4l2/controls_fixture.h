// A camera with controls of every type on a machine of the test's making.
#ifndef OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_V4L2_CONTROLS_FIXTURE_H
#define OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_V4L2_CONTROLS_FIXTURE_H

#include "platform/cameras/v4l2/v4l2_provider.h"
#include "support/machine.h"
#include "unit/platform/cameras/v4l2/camera_fixture.h"

#include <ostrel/controls.h>

#include <string>

namespace ostrel::tests {

// The kernel's numbers, written down anew.
const uint32_t BRIGHTNESS = V4L2_CID_BRIGHTNESS, AUTOGAIN = V4L2_CID_AUTOGAIN, GAIN = V4L2_CID_GAIN,
               EXPOSURE_AUTO = V4L2_CID_EXPOSURE_AUTO, EXPOSURE = V4L2_CID_EXPOSURE_ABSOLUTE,
               FOCUS = V4L2_CID_FOCUS_ABSOLUTE, FOCUS_AUTO = V4L2_CID_FOCUS_AUTO, PRIVACY = V4L2_CID_PRIVACY,
               LINE = V4L2_CID_POWER_LINE_FREQUENCY;
// A driver's own.
const uint32_t BUTTON = 0x0098f900, MASK = 0x0098f901, LARGE = 0x0098f902, TEXT = 0x0098f903,
               NUMBERS = 0x0098f904, WRITE_ONLY = 0x0098f905;

class ControlsTest : public testing::Test {
protected:
    const std::string path = "/dev/video0";
    const std::string where = "HD Webcam (/dev/video0)";
    const QString id = QString::fromLatin1("usb-046d:0825-at-p-1:00");
    std::shared_ptr<ScriptedKernel> kernel = std::make_shared<ScriptedKernel>();
    std::shared_ptr<ScriptedDiscovery> discovery = std::make_shared<ScriptedDiscovery>();
    const Machine machine{cameras::v4l2::makeProvider(kernel, discovery)};
    DeviceScript device;

    ControlsTest() {
        device.formats.push_back(raw(V4L2_PIX_FMT_GREY, {only(64, 48)}));
        ControlScript gain = number(GAIN, "Gain", 0, 100, 10);
        gain.heldBy = AUTOGAIN;
        gain.released = {0};
        ControlScript line = number(LINE, "Power Line Frequency", 0, 3, 1);
        line.type = V4L2_CTRL_TYPE_MENU;
        line.items = {{0, "Disabled"}, {1, "50 Hz"}, {3, "Auto"}};
        ControlScript exposureAuto = number(EXPOSURE_AUTO, "Auto Exposure", 0, 3, 3);
        exposureAuto.type = V4L2_CTRL_TYPE_MENU;
        exposureAuto.items = {{1, "Manual Mode"}, {3, "Aperture Priority Mode"}};
        ControlScript exposure = number(EXPOSURE, "Exposure Time, Absolute", 1, 5000, 157);
        exposure.heldBy = EXPOSURE_AUTO;
        exposure.released = {1, 2};
        ControlScript focus = number(FOCUS, "Focus, Absolute", 0, 250, 0);
        focus.step = 5;
        focus.heldBy = FOCUS_AUTO;
        focus.released = {0};
        device.controls = {number(BRIGHTNESS, "Brightness", -64, 64, 0),
                           boolean(AUTOGAIN, "Gain, Automatic", 1),
                           gain,
                           line,
                           typed(BUTTON, "Button", V4L2_CTRL_TYPE_BUTTON, 0, 0),
                           typed(MASK, "Bitmask", V4L2_CTRL_TYPE_BITMASK, 0xf0000001u, 0x80000000u),
                           typed(LARGE, "Large", V4L2_CTRL_TYPE_INTEGER64, int64_t(1) << 40, 5),
                           typed(TEXT, "Text", V4L2_CTRL_TYPE_STRING, 8, 0),
                           numbers(),
                           exposureAuto,
                           exposure,
                           focus,
                           boolean(FOCUS_AUTO, "Focus, Automatic Continuous", 0),
                           privacy()};
    }

    static ControlScript number(uint32_t id, const char* name, int64_t minimum, int64_t maximum,
                                int64_t standard) {
        ControlScript control;
        control.id = id;
        control.name = name;
        control.minimum = minimum;
        control.maximum = maximum;
        control.standard = standard;
        return control;
    }
    static ControlScript typed(uint32_t id, const char* name, uint32_t type, int64_t maximum,
                               int64_t standard) {
        ControlScript control = number(id, name, 0, maximum, standard);
        control.type = type;
        if (type == V4L2_CTRL_TYPE_BUTTON)
            control.flags = V4L2_CTRL_FLAG_WRITE_ONLY;
        return control;
    }
    static ControlScript boolean(uint32_t id, const char* name, int64_t standard) {
        return typed(id, name, V4L2_CTRL_TYPE_BOOLEAN, 1, standard);
    }
    static ControlScript numbers() {
        ControlScript control = typed(NUMBERS, "Integer Menu", V4L2_CTRL_TYPE_INTEGER_MENU, 2, 0);
        control.items = {{0, "-40"}, {2, "5000000000"}};
        return control;
    }
    static ControlScript privacy() {
        ControlScript control = boolean(PRIVACY, "Privacy", 0);
        control.flags = V4L2_CTRL_FLAG_READ_ONLY | V4L2_CTRL_FLAG_VOLATILE;
        return control;
    }

    void plug() {
        kernel->plug(path, device);
        cameras::v4l2::NodeFacts facts;
        facts.path = path;
        facts.described = true;
        facts.capabilities = ":capture:";
        facts.isUsb = true;
        facts.model = "046d:0825";
        facts.port = "p-1";
        facts.interface = "00";
        facts.name = "HD Webcam";
        facts.driver = "uvcvideo";
        discovery->remove(path);
        discovery->add(facts);
    }
    void unplug() {
        discovery->remove(path);
        kernel->unplug(path);
    }

    QList<OVideoControl> list() {
        QString why;
        const QList<OVideoControl> controls = videoControls(id, &why);
        EXPECT_EQ(why, QString());
        return controls;
    }
    OVideoControl listed(uint32_t wanted) {
        for (const OVideoControl& control : list())
            if (control.id() == wanted)
                return control;
        ADD_FAILURE() << "not listed: " << wanted;
        return OVideoControl();
    }
    std::string whyNoList() {
        QString why;
        EXPECT_TRUE(videoControls(id, &why).isEmpty());
        EXPECT_TRUE(videoControls(id).isEmpty());
        return why.toUtf8().constData();
    }
    static OVideoControl with(uint32_t id, int64_t value) {
        OVideoControl control(id);
        control.setValue(value);
        return control;
    }
    // What is said when they are set; empty when that went well.
    std::string set(const QList<OVideoControl>& values) {
        QString why;
        const bool done = setVideoControls(id, values, &why);
        EXPECT_EQ(done, why.isEmpty());
        return why.toUtf8().constData();
    }
    int64_t now(uint32_t control) { return kernel->controlValue(path, control); }

    void TearDown() override {
        EXPECT_EQ(kernel->openDescriptors(), 0);
        EXPECT_EQ(kernel->misuse(), std::vector<std::string>());
    }
};

} // namespace ostrel::tests

#endif
