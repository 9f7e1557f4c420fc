// The listing over a framework that reports what no machine should: cameras with one identifier, without
// texts.
#include <ostrel/devices.h>

#include "support/recorded_framework.h"

#include <gtest/gtest.h>
#include <QtCore/QtAlgorithms>

#include <stdexcept>

using namespace ostrel;
using recorded::begin;
using recorded::Machine;
using recorded::take;
using recorded::Transcript;

// The stand-ins are named by their places.
TEST(ListingTranscript, AsksEachCameraForItsIdentifierThenItsNameInThePlatformsOrder) {
    begin(Machine{{"b", "a"}});
    EXPECT_EQ(videoDevices().keys(), QList<QString>() << "a"
                                                      << "b");
    EXPECT_EQ(take(), (Transcript{"video devices", "camera0 uniqueID", "camera0 localizedDisplayName",
                                  "camera1 uniqueID", "camera1 localizedDisplayName"}));
}

TEST(ListingTranscript, OfTwoCamerasWithOneIdentifierTheLaterOneGivesTheName) {
    begin(Machine{{"same", "other", "same"}});
    const QMap<QString, QString> found = videoDevices();
    EXPECT_EQ(found.size(), 2);
    EXPECT_EQ(found.value("same"), QString("camera2"));
    OVideoInfoMacX info;
    const QList<OVideoDeviceUnix*> devices = info.devices();
    ASSERT_EQ(devices.size(), 2);
    EXPECT_EQ(devices.at(1)->uniqueID(), QString("same"));
    EXPECT_EQ(devices.at(1)->name(), QString("camera2"));
    qDeleteAll(devices);
    const QSharedPointer<OVideoDeviceUnix> device = info.deviceByID("same");
    ASSERT_TRUE(device);
    EXPECT_EQ(device->name(), QString("camera2"));
}

TEST(ListingTranscript, ACameraWithoutAnIdentifierEndsItWithAnException) {
    begin(Machine{{"good", nullptr, "never asked"}});
    EXPECT_THROW(videoDevices(), std::logic_error);
    EXPECT_EQ(take().back(), "camera1 uniqueID");
}

TEST(ListingTranscript, ACameraWithoutANameEndsItWithAnException) {
    Machine machine{{"good", "bad"}};
    machine.named = false;
    begin(machine);
    EXPECT_THROW(videoDevices(), std::logic_error);
    EXPECT_EQ(take().back(), "camera0 localizedDisplayName");
}
