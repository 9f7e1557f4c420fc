#include <ostrel/devices.h>

#include "support/camera_test.h"

#include <QtCore/QtAlgorithms>

using namespace ostrel;

namespace {

// Counts the devices that are allocated.
class CountedDevice : public OVideoDeviceUnix {
public:
    explicit CountedDevice(const QString& identifier) {
        setUniqueID(identifier);
        ++alive;
    }
    ~CountedDevice() override { --alive; }
    static int alive;
};
int CountedDevice::alive = 0;

// An enumeration of its own, in its own order.
class FixedInfo : public OVideoInfoMacX {
public:
    explicit FixedInfo(const QStringList& identifiers) : identifiers_(identifiers) {}
    QList<OVideoDeviceUnix*> devices() {
        QList<OVideoDeviceUnix*> list;
        for (const QString& identifier : identifiers_)
            list << new CountedDevice(identifier);
        return list;
    }

private:
    const QStringList identifiers_;
};

QString identifierOf(const QSharedPointer<OVideoDeviceUnix>& device) {
    return device ? device->uniqueID() : QString("none");
}

class Lookup : public support::CameraTest {
protected:
    OVideoInfoMacX info;
};

} // namespace

TEST_F(Lookup, FindsACameraByItsIdentifier) {
    attach("first", "First camera");
    attach("second", "Second camera");
    const QSharedPointer<OVideoDeviceUnix> found = info.deviceByID("first");
    ASSERT_TRUE(found);
    EXPECT_EQ(found->uniqueID(), QString("first"));
    EXPECT_EQ(found->name(), QString("First camera"));
    EXPECT_EQ(found->videoFormats().size(), 3);
}

TEST_F(Lookup, IgnoresLetterCase) {
    attach("Camera-\xc3\x84");
    EXPECT_EQ(identifierOf(info.deviceByID(QString::fromUtf8("cAMERA-\xc3\xa4"))),
              QString::fromUtf8("Camera-\xc3\x84"));
}

// Each pair is equal in another way of comparing, but not in lower case.
TEST_F(Lookup, ComparesInLowerCaseAndInNoOtherWay) {
    const char* const pairs[][2] = {
        {"stra\xc3\x9f"
         "e",
         "STRASSE"},                     // sharp s: equal when folded fully or in upper case
        {"\xc4\xb1sik", "Isik"},         // dotless i: equal in upper case
        {"\xcf\x83", "\xcf\x82"},        // sigma and final sigma: equal folded and in upper case
        {"\xc5\xbf", "s"},               // long s: likewise
        {"\xc2\xb5", "\xce\xbc"},        // micro sign and mu: likewise
        {"cafe\xcc\x81", "caf\xc3\xa9"}, // two ways to write one letter: equal when normalised
        {"camera-1", "camera-2"},        // equal in length
    };
    for (const auto& pair : pairs) {
        const auto camera = attach(pair[0]);
        EXPECT_TRUE(info.deviceByID(QString::fromUtf8(pair[0]))) << pair[0];
        EXPECT_FALSE(info.deviceByID(QString::fromUtf8(pair[1]))) << pair[1];
        detach(camera);
        const auto other = attach(pair[1]);
        EXPECT_FALSE(info.deviceByID(QString::fromUtf8(pair[0]))) << pair[0];
        detach(other);
    }
}

// These are equal in lower case alone: the Kelvin sign's is k, a capital sharp s's is the small one.
TEST_F(Lookup, FindsWhateverIsEqualInLowerCase) {
    for (const auto& pair :
         {std::pair<const char*, const char*>{"\xe2\x84\xaa", "k"}, {"\xe1\xba\x9e", "\xc3\x9f"}}) {
        const auto camera = attach(pair.first);
        EXPECT_TRUE(info.deviceByID(QString::fromUtf8(pair.second))) << pair.second;
        detach(camera);
    }
}

TEST_F(Lookup, ComparesWholeIdentifiersWithoutTrimming) {
    attach("camera-11");
    EXPECT_TRUE(info.deviceByID("camera-1").isNull());
    EXPECT_TRUE(info.deviceByID("camera-111").isNull());
    EXPECT_TRUE(info.deviceByID(" camera-11").isNull());
    EXPECT_TRUE(info.deviceByID("camera-11 ").isNull());
    EXPECT_TRUE(info.deviceByID("camera-11"));
}

TEST_F(Lookup, EmptyIdentifierMatchesOnlyACameraWithoutOne) {
    attach("camera");
    EXPECT_TRUE(info.deviceByID("").isNull());
    EXPECT_TRUE(info.deviceByID(QString()).isNull());
    attach("", "nameless");
    EXPECT_EQ(info.deviceByID("")->name(), QString("nameless"));
    EXPECT_EQ(info.deviceByID(QString())->name(), QString("nameless"));
}

TEST_F(Lookup, OfIdentifiersThatDifferInCaseOnlyTheOneThatSortsLaterIsFound) {
    attach("cam", "lower");
    attach("CAM", "upper");
    attach("Cam", "mixed");
    for (const char* asked : {"cam", "CAM", "Cam", "cAm"})
        EXPECT_EQ(identifierOf(info.deviceByID(asked)), QString("cam")) << asked;
}

TEST(LookupOwnership, EveryDeviceThatIsNotReturnedIsDeleted) {
    FixedInfo info(QStringList() << "a"
                                 << "b"
                                 << "c"
                                 << "d");
    {
        const QSharedPointer<OVideoDeviceUnix> found = info.deviceByID("c");
        EXPECT_EQ(identifierOf(found), QString("c"));
        EXPECT_EQ(CountedDevice::alive, 1);
    }
    EXPECT_EQ(CountedDevice::alive, 0);
}

TEST(LookupOwnership, AMissLeavesNoDevice) {
    FixedInfo info(QStringList() << "a"
                                 << "b");
    EXPECT_TRUE(info.deviceByID("c").isNull());
    EXPECT_EQ(CountedDevice::alive, 0);
}

TEST(LookupOwnership, EarlierMatchesAreDeletedAndTheLastInListOrderIsReturned) {
    FixedInfo info(QStringList() << "cam"
                                 << "x"
                                 << "Cam"
                                 << "CAM"
                                 << "y");
    const QSharedPointer<OVideoDeviceUnix> found = info.deviceByID("cam");
    EXPECT_EQ(identifierOf(found), QString("CAM"));
    EXPECT_EQ(CountedDevice::alive, 1);
}

TEST(LookupOwnership, DeviceLivesUntilTheLastCopyOfThePointerGoes) {
    FixedInfo info(QStringList() << "a");
    QSharedPointer<OVideoDeviceUnix> found = info.deviceByID("a");
    QSharedPointer<OVideoDeviceUnix> copy = found;
    found.clear();
    EXPECT_EQ(CountedDevice::alive, 1);
    copy.clear();
    EXPECT_EQ(CountedDevice::alive, 0);
}

TEST(LookupOwnership, SearchesTheEnumerationOfASubclass) {
    FixedInfo info(QStringList() << "only here");
    OVideoInfoUnix& interface = info;
    EXPECT_TRUE(interface.deviceByID("ONLY HERE"));
}
