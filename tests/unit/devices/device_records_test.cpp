#include <ostrel/devices.h>

#include "support/vtable.h"

#include <gtest/gtest.h>

#include <type_traits>

using ostrel::OVideoDeviceUnix;
using ostrel::OVideoFormat;
using ostrel::support::inSlot;

namespace {

bool same(const OVideoFormat& a, const OVideoFormat& b) {
    return a.formatId == b.formatId && a.width == b.width && a.height == b.height;
}

int deaths = 0;

struct CountedDevice : OVideoDeviceUnix {
    ~CountedDevice() override { ++deaths; }
};

} // namespace

TEST(VideoFormat, IsThreeSigned32BitNumbersAndNothingElse) {
    EXPECT_EQ(sizeof(OVideoFormat), 12u);
    EXPECT_EQ(offsetof(OVideoFormat, formatId), 0u);
    EXPECT_EQ(offsetof(OVideoFormat, width), 4u);
    EXPECT_EQ(offsetof(OVideoFormat, height), 8u);
    EXPECT_TRUE((std::is_same<decltype(OVideoFormat::formatId), int32_t>::value));
    EXPECT_TRUE(std::is_trivial<OVideoFormat>::value);
}

TEST(DeviceRecord, IsEmptyWhenNew) {
    OVideoDeviceUnix device;
    EXPECT_TRUE(device.name().isEmpty());
    EXPECT_TRUE(device.uniqueID().isEmpty());
    EXPECT_TRUE(device.deviceFile().isEmpty());
    EXPECT_TRUE(device.videoFormats().isEmpty());
}

TEST(DeviceRecord, KeepsEachTextApartFromTheOthers) {
    OVideoDeviceUnix device;
    device.setName(QString::fromUtf8("K\xc3\xbc\x63he"));
    device.setUniqueID("id");
    device.setDeviceFile("/dev/video0");
    EXPECT_EQ(device.name(), QString::fromUtf8("K\xc3\xbc\x63he"));
    EXPECT_EQ(device.uniqueID(), QString("id"));
    EXPECT_EQ(device.deviceFile(), QString("/dev/video0"));
    device.setName(QString());
    EXPECT_TRUE(device.name().isEmpty());
    EXPECT_EQ(device.uniqueID(), QString("id"));
}

TEST(DeviceRecord, KeepsThreeEqualFormatsInTheOrderAdded) {
    OVideoDeviceUnix device;
    const OVideoFormat format = {4, 320, 240};
    for (int i = 0; i < 3; ++i)
        device.addVideoFormat(format);
    ASSERT_EQ(device.videoFormats().size(), 3);
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(same(device.videoFormats().at(i), format));
    device.addVideoFormat({-1, -2, INT32_MIN});
    ASSERT_EQ(device.videoFormats().size(), 4);
    EXPECT_TRUE(same(device.videoFormats().last(), {-1, -2, INT32_MIN}));
}

TEST(DeviceRecord, ListReadBeforeIsNotTouchedByLaterFormatsOrByTheDevicesEnd) {
    OVideoDeviceUnix* const device = new OVideoDeviceUnix;
    device->addVideoFormat({4, 1, 2});
    const QList<OVideoFormat> list = device->videoFormats();
    device->addVideoFormat({4, 3, 4});
    EXPECT_EQ(list.size(), 1);
    delete device;
    ASSERT_EQ(list.size(), 1);
    EXPECT_TRUE(same(list.first(), {4, 1, 2}));
}

TEST(DeviceRecord, ReplacesItsListByTheGivenOneAndLeavesThatAsItIs) {
    OVideoDeviceUnix device;
    device.addVideoFormat({4, 1, 1});
    QList<OVideoFormat> given;
    given << OVideoFormat{5, 6, 7} << OVideoFormat{8, 9, 10};
    device.setVideoFormats(given);
    ASSERT_EQ(given.size(), 2); // it is passed by a reference that is not const
    EXPECT_TRUE(same(given.at(0), {5, 6, 7}));
    EXPECT_TRUE(same(given.at(1), {8, 9, 10}));
    ASSERT_EQ(device.videoFormats().size(), 2);
    EXPECT_TRUE(same(device.videoFormats().at(0), {5, 6, 7}));
    EXPECT_TRUE(same(device.videoFormats().at(1), {8, 9, 10}));
}

TEST(DeviceRecord, ChangesOfEitherListDoNotReachTheOther) {
    OVideoDeviceUnix device;
    QList<OVideoFormat> given;
    given << OVideoFormat{5, 6, 7};
    device.setVideoFormats(given);
    given[0].width = 60;
    given << OVideoFormat{8, 9, 10};
    ASSERT_EQ(device.videoFormats().size(), 1);
    EXPECT_TRUE(same(device.videoFormats().first(), {5, 6, 7}));
    device.addVideoFormat({11, 12, 13});
    ASSERT_EQ(given.size(), 2);
    EXPECT_TRUE(same(given.at(1), {8, 9, 10}));
}

TEST(DeviceRecord, SettingItsOwnListChangesNothing) {
    OVideoDeviceUnix device;
    device.addVideoFormat({4, 1, 2});
    device.addVideoFormat({4, 3, 4});
    QList<OVideoFormat> own = device.videoFormats();
    device.setVideoFormats(own);
    ASSERT_EQ(device.videoFormats().size(), 2);
    EXPECT_TRUE(same(device.videoFormats().at(0), {4, 1, 2}));
    EXPECT_TRUE(same(device.videoFormats().at(1), {4, 3, 4}));
}

TEST(DeviceRecord, MapOfFormatsIsEmptyAndItsArgumentNotLookedAt) {
    OVideoDeviceUnix device;
    device.addVideoFormat({4, 1, 2});
    EXPECT_TRUE(device.videoFormats(nullptr).isEmpty());
    EXPECT_TRUE(device.videoFormats(&device).isEmpty());
    EXPECT_TRUE(device.videoFormats(reinterpret_cast<OVideoDeviceUnix*>(8)).isEmpty());
}

TEST(DeviceRecord, IsDestroyedOnceThroughAPointerToIt) {
    deaths = 0;
    OVideoDeviceUnix* const device = new CountedDevice;
    delete device;
    EXPECT_EQ(deaths, 1);
}

TEST(DeviceRecord, IsNeverCopied) {
    EXPECT_FALSE(std::is_copy_constructible<OVideoDeviceUnix>::value);
    EXPECT_FALSE(std::is_copy_assignable<OVideoDeviceUnix>::value);
}

TEST(DeviceRecord, HoldsTwoPointersAndHasItsDestructorsInSlots1And2) {
    EXPECT_EQ(sizeof(OVideoDeviceUnix), 2 * sizeof(void*));
    const CountedDevice counted;
    const OVideoDeviceUnix plain;
    EXPECT_NE(inSlot(counted, 1), inSlot(plain, 1));
    EXPECT_NE(inSlot(counted, 2), inSlot(plain, 2));
    deaths = 0;
    CountedDevice* const device = new CountedDevice;
    reinterpret_cast<void (*)(void*)>(inSlot(*device, 2))(device); // deletes it
    EXPECT_EQ(deaths, 1);
}
