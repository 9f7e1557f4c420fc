#include <ostrel/devices.h>

#include "support/camera_test.h"
#include "support/vtable.h"

#include <QtCore/QtAlgorithms>

#include <stdexcept>
#include <thread>
#include <type_traits>

using namespace ostrel;
using support::inSlot;
using support::ScriptedCamera;
using support::slotOf;

namespace {

// Lists what it is given: the machine's own cameras, whose identifiers nobody has checked.
class FixedProvider : public cameras::CameraProvider {
public:
    explicit FixedProvider(std::vector<std::shared_ptr<cameras::Camera>> listed)
        : cameras_(std::move(listed)) {}
    std::vector<std::shared_ptr<cameras::Camera>> list() override { return cameras_; }

private:
    const std::vector<std::shared_ptr<cameras::Camera>> cameras_;
};

class Enumeration : public support::CameraTest {
protected:
    ~Enumeration() override { qDeleteAll(devices); }

    void machineHas(std::vector<std::shared_ptr<cameras::Camera>> listed) {
        machine.has(std::make_shared<FixedProvider>(std::move(listed)));
    }
    static std::shared_ptr<cameras::Camera> camera(const std::string& identifier, const std::string& name) {
        return std::make_shared<ScriptedCamera>(identifier, name);
    }

    OVideoInfoMacX info;
    QList<OVideoDeviceUnix*> devices; // deleted at the end
};

void expectOfferedFormats(const QList<OVideoFormat>& formats, int repetitions) {
    const int sizes[3][2] = {{320, 240}, {640, 480}, {1280, 720}};
    ASSERT_EQ(formats.size(), 3 * repetitions);
    for (int i = 0; i < 3 * repetitions; ++i) {
        EXPECT_EQ(formats.at(i).formatId, 4);
        EXPECT_EQ(formats.at(i).width, sizes[i % 3][0]);
        EXPECT_EQ(formats.at(i).height, sizes[i % 3][1]);
    }
}

} // namespace

TEST_F(Enumeration, WithoutCamerasEverythingIsEmpty) {
    EXPECT_TRUE(videoDevices().isEmpty());
    EXPECT_TRUE(info.devices().isEmpty());
    EXPECT_TRUE(info.deviceByID("anything").isNull());
    EXPECT_TRUE(info.deviceByID("").isNull());
}

TEST_F(Enumeration, AsksThePlatformAfreshEachTime) {
    const auto camera = attach("one");
    EXPECT_EQ(videoDevices().size(), 1);
    detach(camera);
    EXPECT_TRUE(videoDevices().isEmpty());
    attach("two");
    EXPECT_EQ(videoDevices().keys(), QList<QString>() << "two");
}

TEST_F(Enumeration, ListsIdentifiersAndNamesAsUtf8) {
    attach("id-\xc3\xa9", "Kamera \xe2\x82\xac \xf0\x9f\x93\xb7");
    const QMap<QString, QString> found = videoDevices();
    ASSERT_EQ(found.size(), 1);
    EXPECT_EQ(found.firstKey(), QString::fromUtf8("id-\xc3\xa9"));
    EXPECT_EQ(found.first(), QString::fromUtf8("Kamera \xe2\x82\xac \xf0\x9f\x93\xb7"));
}

TEST_F(Enumeration, VeryLongTextsAreListedWhole) {
    const std::string identifier(100000, 'i'), name(100000, 'n');
    attach(identifier, name);
    EXPECT_EQ(videoDevices().value(QString::fromStdString(identifier)), QString::fromStdString(name));
}

TEST_F(Enumeration, DevicesAreInAscendingOrderOfIdentifiersWithUpperCaseFirst) {
    for (const char* identifier : {"b", "a", "Z", "c", "B", "10", "9", ""})
        attach(identifier, std::string("name of ") + identifier);
    devices = info.devices();
    QStringList identifiers;
    for (OVideoDeviceUnix* device : devices)
        identifiers << device->uniqueID();
    EXPECT_EQ(identifiers, QStringList() << ""
                                         << "10"
                                         << "9"
                                         << "B"
                                         << "Z"
                                         << "a"
                                         << "b"
                                         << "c");
}

TEST_F(Enumeration, EachDeviceEqualsItsEntryOfTheMapAndHasTheThreeFormatsAndNoDeviceFile) {
    attach("first", "First camera");
    attach("second", "Second camera");
    const QMap<QString, QString> found = videoDevices();
    devices = info.devices();
    ASSERT_EQ(devices.size(), found.size());
    for (OVideoDeviceUnix* device : devices) {
        EXPECT_TRUE(found.contains(device->uniqueID()));
        EXPECT_EQ(device->name(), found.value(device->uniqueID()));
        EXPECT_TRUE(device->deviceFile().isEmpty());
        expectOfferedFormats(device->videoFormats(), 1);
    }
}

TEST_F(Enumeration, MoreCamerasThanOneBatchOfTheWalkAreAllListed) {
    for (int i = 0; i < 50; ++i)
        attach("camera " + std::to_string(i), "name " + std::to_string(i));
    EXPECT_EQ(videoDevices().size(), 50);
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(videoDevices().value(QString("camera %1").arg(i)), QString("name %1").arg(i));
}

TEST_F(Enumeration, FormatsAddedTwiceAreThereTwice) {
    OVideoDeviceUnix device;
    info.deviceVideoFormats(&device);
    info.deviceVideoFormats(&device);
    expectOfferedFormats(device.videoFormats(), 2);
}

TEST_F(Enumeration, ACameraWithoutAUsableTextEndsItWithAnException) {
    machineHas({camera("good", "Good"), camera("bad", "not UTF-8: \xff")});
    EXPECT_THROW(videoDevices(), std::logic_error);
    EXPECT_THROW(info.devices(), std::logic_error);
    EXPECT_THROW(info.deviceByID("good"), std::logic_error);
    machineHas({camera("\xff", "Name")});
    EXPECT_THROW(videoDevices(), std::logic_error);
    machineHas({camera("good", "Good")});
    EXPECT_EQ(videoDevices().size(), 1);
}

TEST_F(Enumeration, NothingIsLogged) {
    attach("camera");
    devices = info.devices();
    info.deviceByID("no such camera");
    EXPECT_EQ(err.takeLines(), support::Lines());
}

TEST_F(Enumeration, RunsOnSeveralThreadsWithoutPoolsOfTheirOwn) {
    attach("camera", "Name");
    std::vector<std::thread> threads;
    std::atomic<int> found{0};
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int j = 0; j < 100; ++j)
                found += videoDevices().value("camera") == QString("Name");
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(found, 400);
}

TEST(Information, FactoryGivesANewObjectEachTimeAndTheLastPointerDestroysIt) {
    QSharedPointer<OVideoInfoUnix> one = OVideoInfoUnix::ptr();
    const QSharedPointer<OVideoInfoUnix> two = OVideoInfoUnix::ptr();
    EXPECT_NE(one.data(), two.data());
    EXPECT_TRUE(dynamic_cast<OVideoInfoMacX*>(one.data()));
    const QWeakPointer<OVideoInfoUnix> watch = one;
    QSharedPointer<OVideoInfoUnix> copy = one;
    one.clear();
    EXPECT_FALSE(watch.isNull());
    copy.clear();
    EXPECT_TRUE(watch.isNull());
    EXPECT_TRUE(two);
}

TEST(Information, VirtualOperationsHaveTheirSlots) {
    EXPECT_EQ(slotOf(&OVideoInfoUnix::devices), 3u);
    EXPECT_EQ(slotOf(&OVideoInfoUnix::deviceByID), 4u);
    EXPECT_EQ(slotOf(&OVideoInfoMacX::devices), 3u);
    EXPECT_EQ(slotOf(&OVideoInfoMacX::deviceByID), 4u);
    EXPECT_EQ(slotOf(&OVideoInfoMacX::deviceVideoFormats), 0u);
    EXPECT_EQ(sizeof(OVideoInfoUnix), sizeof(void*));
    EXPECT_EQ(sizeof(OVideoInfoMacX), 2 * sizeof(void*));
}

TEST(Information, SecondSlotDestroysAndFrees) {
    struct Watched : OVideoInfoMacX {
        explicit Watched(int& deaths) : deaths_(deaths) {}
        ~Watched() override { ++deaths_; }
        int& deaths_;
    };
    int deaths = 0;
    Watched* const object = new Watched(deaths);
    reinterpret_cast<void (*)(void*)>(inSlot(*object, 2))(object);
    EXPECT_EQ(deaths, 1);
    EXPECT_TRUE(std::has_virtual_destructor<OVideoInfoUnix>::value);
    EXPECT_TRUE(std::is_abstract<OVideoInfoUnix>::value);
    EXPECT_FALSE(std::is_copy_constructible<OVideoInfoMacX>::value);
}
