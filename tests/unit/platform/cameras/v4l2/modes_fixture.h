// Modes by the calls of ostrel/modes.h, over a driver that lists what a test says.
#ifndef OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_V4L2_MODES_FIXTURE_H
#define OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_V4L2_MODES_FIXTURE_H

#include "support/machine.h"
#include "unit/platform/cameras/v4l2/listing_fixture.h"

#include "base/qt_text.h"

#include <ostrel/modes.h>

namespace ostrel::tests {

using cameras::Error;

const char* const PATH = "/dev/video0";

inline std::string sides(int width, int height) {
    return std::to_string(width) + 'x' + std::to_string(height);
}

inline std::string fraction(uint32_t numerator, uint32_t denominator) {
    return std::to_string(numerator) + '/' + std::to_string(denominator);
}

// "MJPG 1280x720 1/30", with what ranges and formats without a picture have beside it.
inline std::string text(const OVideoMode& mode) {
    std::string all = utf8Of(mode.format()) + (mode.hasPicture() ? "" : "!");
    all += ' ' + sides(mode.width(), mode.height());
    if (mode.leastWidth() != mode.width() || mode.leastHeight() != mode.height())
        all += " from " + sides(mode.leastWidth(), mode.leastHeight()) + " by " +
               sides(mode.stepWidth(), mode.stepHeight());
    all += ' ' + fraction(mode.intervalNumerator(), mode.intervalDenominator());
    const std::string longest = fraction(mode.longestNumerator(), mode.longestDenominator());
    if (longest != fraction(mode.intervalNumerator(), mode.intervalDenominator()))
        all += " to " + longest;
    return all;
}

inline OVideoMode wish(const char* format, int width = 0, int height = 0, uint32_t rate = 0) {
    OVideoMode mode;
    mode.setFormat(QString::fromLatin1(format));
    mode.setSize(width, height);
    mode.setInterval(rate ? 1 : 0, rate);
    return mode;
}

class ModesTest : public ListingTest {
protected:
    const Machine machine{provider};
    DeviceScript device;
    std::shared_ptr<RecordingSink> sink = std::make_shared<RecordingSink>();
    std::shared_ptr<cameras::Camera> held; // by a capture
    QString identifier;

    ModesTest() { device.formats = {raw(V4L2_PIX_FMT_YUYV, {only(640, 480)})}; }

    void plug() {
        addBare(PATH, device);
        identifier = textOf(provider->list().at(0)->identifier());
    }
    std::vector<std::string> modes(std::string* reason = nullptr) {
        QString why = QString::fromLatin1("stale");
        std::vector<std::string> result;
        for (const OVideoMode& mode : videoModes(identifier, &why))
            result.push_back(text(mode));
        if (reason)
            *reason = utf8Of(why);
        else
            EXPECT_EQ(utf8Of(why), "");
        return result;
    }
    // Empty when it was granted.
    std::string request(const OVideoMode& mode) {
        QString why;
        const bool granted = requestVideoMode(identifier, mode, &why);
        EXPECT_EQ(granted, why.isEmpty());
        return utf8Of(why);
    }
    Error start(int width, int height, const std::shared_ptr<cameras::FrameSink>& to) {
        if (!held)
            held = provider->list().at(0);
        const Error refused = held->open();
        return refused ? refused : held->start(width, height, to);
    }
    // What a stream for a picture of this size runs in.
    std::string granted(int width = 640, int height = 480) {
        const Error refused = start(width, height, sink);
        if (refused)
            return refused.text;
        const std::string mode = now();
        held->stop(sink);
        return mode;
    }
    std::string now() const {
        const cameras::Mode mode = held->statistics().granted;
        return mode.format + ' ' + sides(mode.size.width, mode.size.height) + ' ' +
               fraction(mode.interval.numerator, mode.interval.denominator);
    }
    void TearDown() override {
        requestVideoMode(identifier, OVideoMode());
        if (held)
            held->close();
        sink->drop();
        EXPECT_EQ(kernel->mappings(), 0);
        ListingTest::TearDown();
    }
};

inline FormatScript withRates(FormatScript format, const std::vector<uint32_t>& rates) {
    format.intervals.clear();
    for (const uint32_t rate : rates)
        format.intervals.push_back(perSecond(rate));
    return format;
}

} // namespace ostrel::tests

#endif
