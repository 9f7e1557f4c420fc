#include "driver_test.h"

#include <QtCore/QPointer>

#include <type_traits>

using namespace ostrel;
using support::Lines;

namespace {
using CaptureFactory = support::DriverTest;
}

TEST_F(CaptureFactory, GivesANewDriverEachTimeAndEachDiesWithItsOwnLastReference) {
    attach("camera");
    QSharedPointer<OVideoCaptureUnix> one = OVideoCaptureUnix::ptr();
    QSharedPointer<OVideoCaptureUnix> two = OVideoCaptureUnix::ptr();
    EXPECT_NE(one.data(), two.data());
    EXPECT_TRUE(dynamic_cast<OVideoCaptureMacX*>(one.data()));
    const QPointer<OVideoCaptureUnix> watchOne(one.data()), watchTwo(two.data());
    for (const auto& each : {one, two})
        each->startCapture("none", 16, 16); // so that they have a session object to give back
    QSharedPointer<OVideoCaptureUnix> copy = one;
    one.clear();
    EXPECT_FALSE(watchOne.isNull());
    copy.clear();
    EXPECT_TRUE(watchOne.isNull());
    EXPECT_FALSE(watchTwo.isNull());
    two.clear();
    EXPECT_TRUE(watchTwo.isNull());
}

TEST_F(CaptureFactory, StartsWithOneStrongReference) {
    QSharedPointer<OVideoCaptureUnix> driver = OVideoCaptureUnix::ptr();
    driver->startCapture("none", 16, 16); // so that it has a session object to give back
    const QWeakPointer<OVideoCaptureUnix> watch = driver;
    EXPECT_FALSE(watch.toStrongRef().isNull());
    driver.clear();
    EXPECT_TRUE(watch.toStrongRef().isNull());
}

TEST_F(CaptureFactory, LastReferenceToACapturingDriverStopsTheCaptureFirst) {
    const auto camera = attach("camera");
    QSharedPointer<OVideoCaptureUnix> driver = OVideoCaptureUnix::ptr();
    const void* const address = driver.data();
    driver->startCapture("camera", 16, 16);
    driver->wait();
    EXPECT_TRUE(camera->isRunning());
    err.takeLines();
    driver.clear();
    EXPECT_FALSE(camera->isRunning());
    EXPECT_FALSE(camera->isOpen());
    EXPECT_EQ(
        err.takeLines(),
        joined({{destroyed(address), stopping(address), stopping1(address), "after stop"}, tearDown()}));
}

TEST_F(CaptureFactory, DriversOfOneCameraAreIndependent) {
    const auto camera = attach("camera");
    auto one = started("camera", 16, 8);
    auto two = started("camera", 32, 24);
    camera->deliver(5);
    EXPECT_EQ(poll(*one).size(), 16u * 8 * 4);
    EXPECT_EQ(poll(*two).size(), 32u * 24 * 4);
    EXPECT_EQ(support::numberIn(poll(*two)), 5);
    one.reset();
    EXPECT_TRUE(camera->isOpen());
    camera->deliver(6);
    EXPECT_EQ(support::numberIn(poll(*two)), 6);
    two.reset();
    EXPECT_FALSE(camera->isOpen());
    EXPECT_EQ(camera->opens(), 1);
}

TEST_F(CaptureFactory, ContractThroughTheInterfaceAlone) {
    const auto camera = attach("camera");
    const QSharedPointer<OVideoCaptureUnix> driver = OVideoCaptureUnix::ptr();
    EXPECT_TRUE(driver->cameraUniqueId().isEmpty());
    EXPECT_EQ(driver->width(), 0);
    EXPECT_EQ(driver->height(), 0);
    driver->stopVideoCapture(); // harmless
    driver->startCapture("camera", 32, 16);
    driver->wait();
    camera->deliver(9);
    VideoFrame frame;
    driver->selfVideoFrame(frame);
    EXPECT_EQ(support::numberIn(frame.data), 9);
    EXPECT_EQ(driver->cameraUniqueId(), QString("camera"));
    EXPECT_EQ(driver->width(), 32);
    EXPECT_EQ(driver->height(), 16);
    EXPECT_TRUE(driver->frame().isNull());
    driver->stopVideoCapture();
    EXPECT_FALSE(camera->isRunning());
}

TEST(CaptureInterface, IsAnAbstractThreadWithoutDataOfItsOwn) {
    EXPECT_TRUE((std::is_base_of<QThread, OVideoCaptureUnix>::value));
    EXPECT_TRUE(std::is_abstract<OVideoCaptureUnix>::value);
    EXPECT_TRUE(std::has_virtual_destructor<OVideoCaptureUnix>::value);
    EXPECT_EQ(sizeof(OVideoCaptureUnix), sizeof(QThread));
    EXPECT_EQ(sizeof(OVideoCaptureMacX), sizeof(QThread) + sizeof(void*));
    EXPECT_FALSE(std::is_copy_constructible<OVideoCaptureMacX>::value);
    EXPECT_EQ(sizeof(QSharedPointer<VideoFrame>), 2 * sizeof(void*));
}
