// Modes as they are typed, and as they are listed.
#include "apps/camera/mode_choice.h"
#include "apps/camera/mode_list.h"

#include <gtest/gtest.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

namespace ostrel::tests {

using namespace apps;
using namespace apps::cli;

namespace {

std::string reread(const std::string& text) {
    const std::optional<WantedMode> wanted = parseMode(text);
    if (!wanted)
        return "none";
    return wanted->format + ' ' + toString(wanted->size) + ' ' +
           (wanted->rate
                ? std::to_string(wanted->rate->numerator) + '/' + std::to_string(wanted->rate->denominator)
                : "any");
}

OVideoMode mode(const char* format, int width, int height, uint32_t rate) {
    OVideoMode result;
    result.setFormat(format);
    result.setSize(width, height);
    result.setInterval(rate ? 1 : 0, rate);
    return result;
}

} // namespace

TEST(ModeChoice, AnyPartOfAModeMayBeLeftOut) {
    EXPECT_EQ(reread("MJPG:1280x720@60"), "MJPG 1280x720 60/1");
    EXPECT_EQ(reread("MJPG:hd"), "MJPG 1280x720 any");
    EXPECT_EQ(reread("MJPG@30000/1001"), "MJPG 0x0 30000/1001");
    EXPECT_EQ(reread("640x480@15"), " 640x480 15/1");
    EXPECT_EQ(reread("720p"), " 1280x720 any");
    EXPECT_EQ(reread("YUYV"), "YUYV 0x0 any");
    EXPECT_EQ(reread("Y16-BE"), "Y16-BE 0x0 any");
    EXPECT_EQ(reread("@60"), " 0x0 60/1");
    for (const char* wrong :
         {"", "@", ":", "MJPG:", ":hd", "MJPG:wide", "MJPG@fast", "MJPG:hd@", "@0", "@60@30"})
        EXPECT_EQ(reread(wrong), "none") << wrong;
}

TEST(ModeChoice, AFormatIsTakenInTheLetterCaseThatTheCameraHas) {
    const QList<OVideoMode> offered = {mode("pBAA", 64, 48, 30), mode("MJPG", 64, 48, 30)};
    const auto wished = [&offered](const char* text) {
        return wishOf(parseMode(text).value(), offered).format().toStdString();
    };
    EXPECT_EQ(wished("mjpg@30"), "MJPG");
    EXPECT_EQ(wished("PBAA"), "pBAA");
    EXPECT_EQ(wishOf(parseMode("pbaa").value(), {mode("pBAA", 1, 1, 1), mode("pbaa", 1, 1, 1)})
                  .format()
                  .toStdString(),
              "pbaa");
    EXPECT_EQ(wished("h264"), "h264");
    EXPECT_EQ(wished("hd"), "");
    const OVideoMode slow = wishOf(parseMode("@29.97").value(), offered);
    EXPECT_EQ(slow.intervalNumerator(), 1001U);
    EXPECT_EQ(slow.intervalDenominator(), 30000U);
}

TEST(ModeList, HasALineForEachFormatAndSize) {
    EXPECT_EQ(modeTable({mode("MJPG", 1280, 720, 60), mode("MJPG", 1280, 720, 30), mode("MJPG", 640, 480, 30),
                         mode("YU\xC3\xA4V", 64, 48, 0), mode("PWC1", 0, 0, 0)}),
              "  MJPG  1280x720  60/s 30/s\n"
              "  MJPG  640x480   30/s\n"
              "  YU\xC3\xA4V  64x48\n"
              "  PWC1  any size\n");
    EXPECT_EQ(modeTable({}), "");
    const QJsonArray json = modeJson({mode("MJPG", 1280, 720, 60), mode("PWC1", 0, 0, 0)});
    EXPECT_EQ(json[0].toObject(), QJsonObject({{"format", "MJPG"},
                                               {"picture", true},
                                               {"width", 1280},
                                               {"height", 720},
                                               {"interval", QJsonArray{1, 60}},
                                               {"rate", 60}}));
    EXPECT_EQ(json[1].toObject(), QJsonObject({{"format", "PWC1"}, {"picture", true}}));
}

} // namespace ostrel::tests
