// Which cameras are listed, and what asking costs.
#include "unit/platform/cameras/pipewire/pipewire_test.h"

#include "base/monotonic_clock.h"
#include "platform/cameras/registry.h"
#include "platform/cameras/streaming_camera.h"
#include "support/process_figures.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <sys/stat.h>

namespace ostrel::tests {

using cameras::pipewire::Connection;
using cameras::pipewire::Remote;
using support::PipeWireCamera;

class PipeWireListing : public PipeWireTest {};

TEST_F(PipeWireListing, HasEveryCameraAndNoSharedScreen) {
    const PipeWireCamera one("one", {"description=Front camera"});
    const PipeWireCamera other("the other");
    support::Program screen({OSTREL_PIPEWIRE_CAMERA, "screen", "role=Screen"});
    ASSERT_TRUE(screen.waitForLine("paused"));
    EXPECT_EQ(names(), Words({"Front camera", "the other"}));
    EXPECT_EQ(listed("Front camera")->identifier(), "pipewire-one");
    EXPECT_EQ(listed("the other")->identifier(), "pipewire-the%20other");
    EXPECT_EQ(remote->ask()->otherSources(), 1);
}

TEST_F(PipeWireListing, WhatTheNodeTellsOfItsDeviceIsInTheDetails) {
    const PipeWireCamera one("one",
                             {"api.v4l2.cap.driver=uvcvideo", "device.bus-path=pci-0000:00:14.0-usb-0:2",
                              "device.vendor.id=0x046d", "device.product.id=0x0825"});
    const PipeWireCamera other("other", {"device.vendor.id=0x120", "device.product.id=0x082g",
                                         "api.v4l2.cap.bus_info=usb-2", "device.bus-path=path"});
    const cameras::CameraDetails told = listed("one")->details();
    EXPECT_EQ(told.kind, "PipeWire");
    EXPECT_EQ(told.node, "one");
    EXPECT_EQ(told.driver, "uvcvideo");
    EXPECT_EQ(told.bus, "pci-0000:00:14.0-usb-0:2");
    EXPECT_EQ(told.vendor, 0x046d);
    EXPECT_EQ(told.product, 0x0825);
    const cameras::CameraDetails cut = listed("other")->details();
    EXPECT_EQ(cut.vendor, 0) << "the last digit is missing";
    EXPECT_EQ(cut.product, 0);
    EXPECT_EQ(cut.bus, "usb-2") << "the driver's own word comes first";
    EXPECT_EQ(cut.driver, "");
}

TEST_F(PipeWireListing, ACameraThatComesBackHasItsIdentifierAndIsAnotherObject) {
    auto first = std::make_unique<PipeWireCamera>("one");
    const auto before = listed("one");
    first.reset();
    EXPECT_TRUE(names().empty());
    EXPECT_FALSE(before->attached());
    const PipeWireCamera again("one");
    EXPECT_FALSE(before->attached()) << "it is not the one that was listed";
    EXPECT_EQ(listed("one")->identifier(), before->identifier());
    EXPECT_TRUE(listed("one")->attached());
}

TEST_F(PipeWireListing, OfTwoWithOneNameTheOlderIsTheCamera) {
    const PipeWireCamera older("one", {"description=Older"});
    const PipeWireCamera newer("one", {"description=Newer"});
    EXPECT_TRUE(comesTrue([&] { return remote->ask()->cameras().size() == 2; }));
    EXPECT_EQ(names(), Words({"Older"}));
}

// A kind that lists one camera behind the device that PipeWire's camera is said to be, too.
class Node : public cameras::CameraProvider {
public:
    explicit Node(uint64_t device) : device_(device) {}
    std::vector<std::shared_ptr<cameras::Camera>> list() override {
        return {std::make_shared<cameras::StreamingCamera>(
            cameras::StreamingCamera::Identity{"node", "Node", "Node", {}, {device_}}, nullptr)};
    }

private:
    const uint64_t device_;
};

TEST_F(PipeWireListing, WhatHasANodeInTheListingIsNotListedAgain) {
    const PipeWireCamera one("one", {"path=/dev/null"});
    const PipeWireCamera other("other", {"path=/dev/zero"});
    struct stat file = {};
    ASSERT_EQ(::stat("/dev/null", &file), 0);
    const auto before = cameras::setProviders({std::make_shared<Node>(file.st_rdev), provider});
    std::vector<std::string> all;
    for (const auto& each : cameras::attachedCameras())
        all.push_back(each->identifier());
    cameras::setProviders(before);
    EXPECT_EQ(all, Words({"node", "pipewire-other"}));
    EXPECT_EQ(provider->waysTo(file.st_rdev).size(), 1u);
    EXPECT_TRUE(provider->waysTo(file.st_rdev + 1000).empty());
}

TEST_F(PipeWireListing, WithoutADaemonNobodyWaits) {
    session.daemon().end(SIGKILL);
    errno = 0;
    EXPECT_EQ(remote->ask(), nullptr);
    EXPECT_EQ(errno, EHOSTDOWN);
    int64_t fastest = INT64_MAX; // of ten rows of a hundred: other programs have the processor as well
    for (int row = 0; row < 10; ++row) {
        const int64_t begin = monotonicNanoseconds();
        for (int i = 0; i < 100; ++i)
            EXPECT_TRUE(provider->list().empty());
        fastest = std::min(fastest, (monotonicNanoseconds() - begin) / 100);
    }
    EXPECT_LT(fastest, 200000) << "nanoseconds for one";
}

TEST_F(PipeWireListing, ADaemonThatDoesNotAnswerIsLeftOutForAWhile) {
    const PipeWireCamera one("one");
    EXPECT_EQ(names(), Words({"one"}));
    Remote::timeout = 100000000;
    session.daemon().kill(SIGSTOP);
    const int64_t begin = monotonicNanoseconds();
    EXPECT_TRUE(provider->list().empty());
    const int64_t first = monotonicNanoseconds();
    EXPECT_GE(first - begin, Remote::timeout);
    for (int i = 0; i < 100; ++i)
        EXPECT_TRUE(provider->list().empty());
    EXPECT_LT(monotonicNanoseconds() - first, 100 * Remote::timeout / 2) << "it was asked each time";
    session.daemon().kill(SIGCONT);
    Remote::timeout = 30000000000;
    EXPECT_TRUE(comesTrue([&] { return names() == Words({"one"}); }));
}

TEST_F(PipeWireListing, AMachineWithoutTheLibraryHasNone) {
    const PipeWireCamera one("one");
    const auto without =
        std::make_shared<Remote>(+[]() -> const cameras::pipewire::Library* { return nullptr; });
    EXPECT_TRUE(cameras::pipewire::makeProvider(without)->list().empty());
    EXPECT_EQ(without->ask(), nullptr);
    EXPECT_EQ(errno, ENOPKG);
    EXPECT_EQ(cameras::pipewire::loadLibrary("libpipewire-none.so"), nullptr);
    EXPECT_EQ(cameras::pipewire::loadLibrary("libc.so.6"), nullptr) << "it lacks the functions";
}

TEST_F(PipeWireListing, AThousandListingsLeaveNothingBehind) {
    const PipeWireCamera one("one");
    // Until then the allocator has not kept one of each block that it keeps for the next one who asks.
    for (int i = 0; i < OSTREL_TEST_TIMES; ++i)
        provider->list();
    const auto before = support::processFigures();
    for (int i = 0; i < OSTREL_TEST_TIMES; ++i)
        ASSERT_EQ(provider->list().size(), 1u);
    const auto after = support::processFigures();
    EXPECT_EQ(after.descriptors, before.descriptors);
    EXPECT_TRUE(support::threadsComeDownTo(before.threads));
    // The last connection may be about to end.
    EXPECT_TRUE(comesTrue([&before] {
        return support::processFigures().heapBytes < before.heapBytes + OSTREL_TEST_TIMES * 32;
    }));
}

} // namespace ostrel::tests
