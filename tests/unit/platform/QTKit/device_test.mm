#import "recording_delegate.h"

#include "platform/QTKit/open_camera.h"

#include <cerrno>
#include <functional>
#include <thread>

using namespace ostrel;

namespace {

using Devices = support::FrameworkTest;

// A provider that makes a new object for its one camera on each listing.
class FreshProvider : public cameras::CameraProvider {
public:
    std::vector<std::shared_ptr<cameras::Camera>> list() override {
        return {std::make_shared<support::ScriptedCamera>("fresh", "Name " + std::to_string(++listings_))};
    }

private:
    int listings_ = 0;
};

// One that is let go of when it is asked whether it is still there.
class LeavingCamera : public support::ScriptedCamera {
public:
    using ScriptedCamera::ScriptedCamera;
    bool attached() const override {
        if (letGo)
            letGo();
        return !letGo;
    }
    std::function<void()> letGo;
};

} // namespace

TEST_F(Devices, AreNoneWithoutCameras) {
    EXPECT_EQ([[QTCaptureDevice inputDevicesWithMediaType:QTMediaTypeVideo] count], 0u);
}

TEST_F(Devices, OfOtherMediaAreNone) {
    attach("camera");
    EXPECT_EQ([[QTCaptureDevice inputDevicesWithMediaType:@"soun"] count], 0u);
    EXPECT_EQ([[QTCaptureDevice inputDevicesWithMediaType:@""] count], 0u);
    EXPECT_EQ([[QTCaptureDevice inputDevicesWithMediaType:nil] count], 0u);
    EXPECT_EQ([[QTCaptureDevice inputDevicesWithMediaType:QTMediaTypeVideo] count], 1u);
}

TEST_F(Devices, TellIdentifierAndName) {
    attach("id", "K\xc3\xbc\x63he");
    EXPECT_STREQ([[device("id") uniqueID] UTF8String], "id");
    EXPECT_STREQ([[device("id") localizedDisplayName] UTF8String], "K\xc3\xbc\x63he");
}

TEST_F(Devices, AreOneObjectForEachIdentifier) {
    attach("one");
    attach("two");
    QTCaptureDevice* const one = device("one");
    EXPECT_EQ(device("one"), one);
    EXPECT_NE(device("two"), one);
}

TEST_F(Devices, PluggedInAgainAreTheSameObject) {
    const auto before = attach("camera", "before");
    QTCaptureDevice* const first = device("camera");
    detach(before);
    EXPECT_EQ(device("camera"), nil);
    attach("camera", "after");
    EXPECT_EQ(device("camera"), first);
    EXPECT_STREQ([[first localizedDisplayName] UTF8String], "after");
}

TEST_F(Devices, OutliveThePoolOfTheirListingWithoutBeingRetained) {
    attach("camera", "Name");
    QTCaptureDevice* kept = nil;
    std::thread([&] {
        NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
        kept = device("camera");
        [pool release];
    }).join();
    EXPECT_STREQ([[kept localizedDisplayName] UTF8String], "Name");
}

TEST_F(Devices, OpensAndClosesBalance) {
    const auto camera = attach("camera");
    QTCaptureDevice* const opened = device("camera");
    EXPECT_TRUE([opened open:NULL]);
    EXPECT_TRUE([opened open:NULL]);
    EXPECT_EQ(camera->opens(), 1);
    [opened close];
    EXPECT_TRUE(camera->isOpen());
    [opened close];
    EXPECT_FALSE(camera->isOpen());
    [opened close]; // harmless
    EXPECT_EQ(camera->closes(), 1);
    EXPECT_TRUE([opened open:NULL]);
    EXPECT_EQ(camera->opens(), 2);
    [opened close];
}

TEST_F(Devices, StayOpenThoughLaterListingsHaveNewObjectsForThem) {
    machine.has(std::make_shared<FreshProvider>());
    QTCaptureDevice* const opened = device("fresh");
    EXPECT_TRUE([opened open:NULL]);
    EXPECT_EQ(device("fresh"), opened);
    [opened close];
    EXPECT_TRUE([opened open:NULL]);
    [opened close];
}

// Its last holder may let go while another open finds it unplugged.
TEST_F(Devices, AreOpenedAnewAtTheMomentInWhichTheCameraBeforeIsLetGoOf) {
    const auto before = std::make_shared<LeavingCamera>("camera");
    const auto after = std::make_shared<support::ScriptedCamera>("camera");
    QTCaptureDeviceState state(before);
    ASSERT_FALSE(state.open(before.get()));
    state.setListed(after);
    before->letGo = [&] { state.close(before.get()); };
    EXPECT_FALSE(state.open(after.get())); // would hang here
    EXPECT_FALSE(before->isOpen());
    EXPECT_TRUE(after->isOpen());
    state.close(after.get());
    EXPECT_FALSE(after->isOpen());
}

TEST_F(Devices, ErrorOfAnOpenCarriesTheTextAndTheCode) {
    const auto camera = attach("camera");
    camera->refuseOpen(cameras::Error("in \xe2\x80\x9euse\xe2\x80\x9c", EBUSY));
    NSError* error = nil;
    EXPECT_FALSE([device("camera") open:&error]);
    ASSERT_NE(error, nil);
    EXPECT_EQ(textOf(error), "in \xe2\x80\x9euse\xe2\x80\x9c");
    EXPECT_EQ([error code], EBUSY);
    EXPECT_FALSE([device("camera") open:NULL]);
    camera->refuseOpen(cameras::Error());
    EXPECT_TRUE([device("camera") open:&error]);
    [device("camera") close];
}

TEST_F(Devices, ErrorTextThatIsNotUtf8StillMakesAnError) {
    const auto camera = attach("camera");
    camera->refuseOpen(cameras::Error("\xff"));
    NSError* error = nil;
    EXPECT_FALSE([device("camera") open:&error]);
    EXPECT_FALSE(textOf(error).empty());
    NSLog(@"Error: %@", error);
    EXPECT_EQ(err.takeLines().size(), 1u);
}
