#include "driver_test.h"

#include "support/vtable.h"

#include <new>

// The interface's own virtual table, and what stands in it for an abstract operation.
extern "C" void* _ZTVN6ostrel17OVideoCaptureUnixE[];
extern "C" void __cxa_pure_virtual();

using namespace ostrel;
using support::inSlot;
using support::slotOf;

namespace {

// The interface's table begins after the offset to the top and the type information.
void* inInterfaceSlot(std::size_t slot) {
    return _ZTVN6ostrel17OVideoCaptureUnixE[2 + slot - 1];
}

// Pointers to operations that are protected.
struct Probe : OVideoCaptureMacX {
    static std::size_t slotOfRun() { return slotOf(&Probe::run); }
    static std::size_t slotOfTimerEvent() { return slotOf(&Probe::timerEvent); }
    static std::size_t slotOfChildEvent() { return slotOf(&Probe::childEvent); }
    static std::size_t slotOfCustomEvent() { return slotOf(&Probe::customEvent); }
    static std::size_t slotOfConnectNotify() { return slotOf(&Probe::connectNotify); }
    static std::size_t slotOfDisconnectNotify() { return slotOf(&Probe::disconnectNotify); }
};

class Slots : public support::DriverTest {
protected:
    Slots() {
        driver.startCapture("none", 16, 16); // so that it has a session object to give back
    }
    OVideoCaptureMacX driver;
    QThread thread;
};

} // namespace

TEST_F(Slots, OperationsOfQtComeFirstInQtsOrder) {
    EXPECT_EQ(slotOf(&OVideoCaptureUnix::metaObject), 1u);
    EXPECT_EQ(slotOf(&OVideoCaptureUnix::qt_metacast), 2u);
    EXPECT_EQ(slotOf(&OVideoCaptureUnix::qt_metacall), 3u);
    EXPECT_EQ(slotOf(&OVideoCaptureUnix::event), 6u);
    EXPECT_EQ(slotOf(&OVideoCaptureUnix::eventFilter), 7u);
    EXPECT_EQ(Probe::slotOfTimerEvent(), 8u);
    EXPECT_EQ(Probe::slotOfChildEvent(), 9u);
    EXPECT_EQ(Probe::slotOfCustomEvent(), 10u);
    EXPECT_EQ(Probe::slotOfConnectNotify(), 11u);
    EXPECT_EQ(Probe::slotOfDisconnectNotify(), 12u);
    EXPECT_EQ(Probe::slotOfRun(), 13u);
}

TEST_F(Slots, TheSevenOperationsOfTheContractFollow) {
    EXPECT_EQ(slotOf(&OVideoCaptureUnix::startCapture), 14u);
    EXPECT_EQ(slotOf(&OVideoCaptureUnix::stopVideoCapture), 15u);
    EXPECT_EQ(slotOf(&OVideoCaptureUnix::frame), 16u);
    EXPECT_EQ(slotOf(&OVideoCaptureUnix::selfVideoFrame), 17u);
    EXPECT_EQ(slotOf(&OVideoCaptureUnix::cameraUniqueId), 18u);
    EXPECT_EQ(slotOf(static_cast<int (OVideoCaptureUnix::*)()>(&OVideoCaptureUnix::width)), 19u);
    EXPECT_EQ(slotOf(static_cast<int (OVideoCaptureUnix::*)()>(&OVideoCaptureUnix::height)), 20u);
}

TEST_F(Slots, TheContractIsPureInTheInterface) {
    for (std::size_t slot = 14; slot <= 20; ++slot)
        EXPECT_EQ(inInterfaceSlot(slot), reinterpret_cast<void*>(&__cxa_pure_virtual)) << slot;
}

// The destructors' slots are empty in the table of an abstract class: no object is ever destroyed through it.
TEST_F(Slots, TheInterfaceOverridesOnlyQtsPlumbing) {
    for (std::size_t slot : {1, 2, 3})
        EXPECT_NE(inInterfaceSlot(slot), inSlot(thread, slot)) << slot;
    for (std::size_t slot = 6; slot <= 13; ++slot)
        EXPECT_EQ(inInterfaceSlot(slot), inSlot(thread, slot)) << slot;
}

TEST_F(Slots, TheDriverOverridesTheSameAndItsDestructorsAndRunAndTheContract) {
    for (std::size_t slot : {1, 2, 3, 13, 14, 15, 16, 17, 18, 19, 20})
        EXPECT_NE(inSlot(driver, slot), inInterfaceSlot(slot)) << slot;
    for (std::size_t slot : {4, 5})
        EXPECT_NE(inSlot(driver, slot), inSlot(thread, slot)) << slot;
    for (std::size_t slot = 6; slot <= 12; ++slot)
        EXPECT_EQ(inSlot(driver, slot), inSlot(thread, slot)) << slot;
}

TEST_F(Slots, MembersOfTheDriverAloneAreNotVirtual) {
    EXPECT_EQ(slotOf(&OVideoCaptureMacX::videoFrame), 0u);
    EXPECT_EQ(slotOf(&OVideoCaptureMacX::startThreadVideoCapture), 0u);
    driver.startThreadVideoCapture();
}

TEST_F(Slots, FourthDestroysAndFifthFreesAsWell) {
    alignas(OVideoCaptureMacX) static unsigned char place[sizeof(OVideoCaptureMacX)];
    auto* const placed = new (place) OVideoCaptureMacX;
    auto* const allocated = new OVideoCaptureMacX;
    placed->startCapture("none", 16, 16);
    allocated->startCapture("none", 16, 16);
    const auto destroy = reinterpret_cast<void (*)(void*)>(inSlot(*placed, 4));
    const auto destroyAndFree = reinterpret_cast<void (*)(void*)>(inSlot(*allocated, 5));
    err.takeLines();
    destroy(placed); // freeing memory that was never allocated would abort
    EXPECT_EQ(err.takeLines().front(), destroyed(placed));
    destroyAndFree(allocated); // the leak sanitizer would report it otherwise
    EXPECT_EQ(err.takeLines().front(), destroyed(allocated));
}
