// Attaching, the listing, detaching.
#include "readings.h"

#include <gtest/gtest.h>

using namespace ostrel;
using namespace ostrel::tests;

namespace {

QString text(const char* utf8) {
    return QString::fromUtf8(utf8);
}

int listedTimes(const std::string& identifier) {
    int times = 0;
    for (const auto& camera : cameras::attachedCameras())
        times += camera->identifier() == identifier;
    return times;
}

TEST(VirtualListing, NoCameraIsListedBeforeItIsAttached) {
    OVideoTestPatternCamera camera(text("pattern-1"), text("Pattern"));
    EXPECT_FALSE(camera.isAttached());
    EXPECT_EQ(listed("pattern-1"), nullptr);
}

TEST(VirtualListing, AttachedItIsListedWithItsNameInUtf8) {
    OVideoTestPatternCamera camera(text("camera ~1"), text("Testbild \xC3\xBC"));
    EXPECT_TRUE(camera.attach());
    EXPECT_TRUE(camera.isAttached());
    const auto found = listed("camera ~1");
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->displayName(), "Testbild \xC3\xBC");
    EXPECT_TRUE(found->attached());
    EXPECT_EQ(camera.uniqueID(), text("camera ~1"));
    EXPECT_EQ(camera.name(), text("Testbild \xC3\xBC"));
}

// Captures carry identifiers as ASCII: such a camera would be listed, but no capture would find it.
TEST(VirtualListing, AnIdentifierBeyondPrintableAsciiIsRefused) {
    for (const QString& identifier :
         {text("kamera-\xC3\xA4"), text("\xE2\x82\xAC"), text("line\nbreak"), text("tab\t"), text("\x7F"),
          QString(QChar(0)), text("camera") + QChar(0)}) {
        OVideoTestPatternCamera camera(identifier, text("Name"));
        EXPECT_FALSE(camera.attach()) << identifier.toUtf8().constData();
        EXPECT_FALSE(camera.isAttached());
        EXPECT_EQ(camera.uniqueID(), identifier);
        EXPECT_EQ(listedTimes(identifier.toUtf8().constData()), 0);
    }
}

TEST(VirtualListing, ASecondAttachIsRefusedAndChangesNothing) {
    OVideoTestPatternCamera camera(text("pattern-1"), text("Pattern"));
    ASSERT_TRUE(camera.attach());
    EXPECT_FALSE(camera.attach());
    EXPECT_EQ(listedTimes("pattern-1"), 1);
    EXPECT_TRUE(camera.isAttached());
}

TEST(VirtualListing, TheIdentifierOfAnotherAttachedCameraIsRefused) {
    OVideoTestPatternCamera first(text("pattern-1"), text("First")),
        second(text("pattern-1"), text("Second"));
    ASSERT_TRUE(first.attach());
    EXPECT_FALSE(second.attach());
    EXPECT_FALSE(second.isAttached());
    EXPECT_EQ(listedTimes("pattern-1"), 1);
    first.detach();
    EXPECT_TRUE(second.attach());
    EXPECT_EQ(listed("pattern-1")->displayName(), "Second");
}

TEST(VirtualListing, AnEmptyIdentifierIsRefused) {
    OVideoTestPatternCamera camera(QString(), text("Nobody"));
    EXPECT_FALSE(camera.attach());
}

TEST(VirtualListing, AnEmptyNameBecomesTheIdentifier) {
    OVideoTestPatternCamera camera(text("pattern-1"), QString());
    ASSERT_TRUE(camera.attach());
    EXPECT_EQ(camera.name(), text("pattern-1"));
    EXPECT_EQ(listed("pattern-1")->displayName(), "pattern-1");
}

TEST(VirtualListing, CamerasAreListedInTheOrderOfTheirAttaching) {
    OVideoTestPatternCamera a(text("order-a"), text("A")), b(text("order-b"), text("B"));
    ASSERT_TRUE(b.attach());
    ASSERT_TRUE(a.attach());
    std::vector<std::string> order;
    for (const auto& camera : cameras::attachedCameras())
        if (camera->identifier().compare(0, 6, "order-") == 0)
            order.push_back(camera->identifier());
    EXPECT_EQ(order, (std::vector<std::string>{"order-b", "order-a"}));
}

TEST(VirtualListing, DetachingTakesItOutAndIsHarmlessTwice) {
    OVideoTestPatternCamera camera(text("pattern-1"), text("Pattern"));
    camera.detach();
    ASSERT_TRUE(camera.attach());
    const auto before = listed("pattern-1");
    camera.detach();
    camera.detach();
    EXPECT_FALSE(camera.isAttached());
    EXPECT_EQ(listed("pattern-1"), nullptr);
    EXPECT_FALSE(before->attached());
    EXPECT_TRUE(before->open());
}

TEST(VirtualListing, AttachedAgainItIsACameraLikeNew) {
    OVideoTestPatternCamera camera(text("pattern-1"), text("Pattern"), 320, 240, 1000);
    ASSERT_TRUE(camera.attach());
    const auto before = listed("pattern-1");
    camera.detach();
    ASSERT_TRUE(camera.attach());
    const auto after = listed("pattern-1");
    EXPECT_NE(after, before);
    EXPECT_FALSE(before->attached());
    EXPECT_TRUE(after->attached());
    ASSERT_FALSE(after->open());
    auto sink = std::make_shared<RecordingSink>();
    ASSERT_FALSE(after->start(320, 240, sink));
    EXPECT_TRUE(sink->waitForFrames(2));
    after->stop(sink);
    after->close();
}

TEST(VirtualListing, DestroyingTheObjectDetaches) {
    {
        OVideoTestPatternCamera camera(text("pattern-1"), text("Pattern"));
        ASSERT_TRUE(camera.attach());
    }
    EXPECT_EQ(listed("pattern-1"), nullptr);
}

TEST(VirtualListing, ThreadsMayAttachAndDetachAtOnce) {
    OVideoTestPatternCamera camera(text("pattern-1"), text("Pattern"));
    const auto work = [&] {
        for (int i = 0; i < 500; ++i) {
            camera.attach();
            EXPECT_LE(listedTimes("pattern-1"), 1);
            camera.detach();
        }
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(listedTimes("pattern-1"), 0);
}

} // namespace
