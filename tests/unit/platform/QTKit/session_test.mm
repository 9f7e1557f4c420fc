#import "recording_delegate.h"

using namespace ostrel;
using support::Rig;

using Sessions = support::OpenDeviceTest;

TEST_F(Sessions, DeliverEachFrameOnceStarted) {
    Rig rig(opened, 16, 8);
    EXPECT_TRUE(rig.inputAdded && rig.outputAdded);
    EXPECT_FALSE([rig.session isRunning]);
    EXPECT_FALSE(camera->deliver(1)) << "who pushed it would wait in vain"; // held back
    EXPECT_EQ(rig.seen.calls, 0);
    rig.run();
    EXPECT_TRUE([rig.session isRunning]);
    for (uint32_t number : {2u, 3u, 4u})
        EXPECT_TRUE(camera->deliver(number));
    EXPECT_EQ(rig.seen.calls, 3);
    EXPECT_EQ(rig.newestNumber(), 4);
}

TEST_F(Sessions, FramesHaveExactlyTheRequestedSizeAndFormat) {
    const unsigned sizes[][2] = {{320, 240}, {1, 1}, {639, 479}, {1280, 720}};
    for (const auto& size : sizes) {
        Rig rig(opened, size[0], size[1]);
        rig.run();
        camera->deliver(1);
        ASSERT_TRUE(rig.seen.newest);
        EXPECT_EQ(CVPixelBufferGetWidth(rig.seen.newest), size[0]);
        EXPECT_EQ(CVPixelBufferGetHeight(rig.seen.newest), size[1]);
        EXPECT_EQ(CVPixelBufferGetBytesPerRow(rig.seen.newest), size[0] * 4);
        EXPECT_EQ(CVPixelBufferGetPixelFormatType(rig.seen.newest),
                  static_cast<OSType>(kCVPixelFormatType_32BGRA));
        EXPECT_EQ(rig.newestNumber(), 1);
    }
}

TEST_F(Sessions, WithoutAttributesFramesAre640x480) {
    Rig rig(opened, 16, 8);
    [rig.session stopRunning];
    QTCaptureSession* const session = [[QTCaptureSession alloc] init];
    QTCaptureDecompressedVideoOutput* const output = [[QTCaptureDecompressedVideoOutput alloc] init];
    [session addInput:rig.input error:NULL];
    EXPECT_TRUE([session addOutput:output error:NULL]);
    EXPECT_EQ(camera->sizesStarted().back(), (std::pair<int, int>{640, 480}));
    [session release];
    [output release];
}

TEST_F(Sessions, CanBeStartedAgainAfterAStop) {
    Rig rig(opened, 16, 8);
    for (int i = 1; i <= 3; ++i) {
        rig.run();
        camera->deliver(1);
        EXPECT_EQ(rig.seen.calls, i);
        [rig.session stopRunning];
        EXPECT_FALSE([rig.session isRunning]);
        EXPECT_FALSE(camera->isRunning());
        camera->deliver(2);
        EXPECT_EQ(rig.seen.calls, i);
    }
}

TEST_F(Sessions, StartedOrStoppedTwiceAreAsOnce) {
    Rig rig(opened, 16, 8);
    rig.run();
    rig.run();
    camera->deliver(1);
    EXPECT_EQ(rig.seen.calls, 1);
    [rig.session stopRunning];
    [rig.session stopRunning];
    EXPECT_FALSE(camera->isRunning());
}

TEST_F(Sessions, TwoOnOneCameraGetTheirOwnSizesAndTheLastCloseClosesIt) {
    EXPECT_TRUE([opened open:NULL]); // each client opens for itself
    {
        Rig one(opened, 16, 8), two(opened, 64, 48);
        one.run();
        two.run();
        camera->deliver(7);
        EXPECT_EQ(CVPixelBufferGetWidth(one.seen.newest), 16u);
        EXPECT_EQ(CVPixelBufferGetWidth(two.seen.newest), 64u);
        EXPECT_EQ(one.newestNumber(), 7);
        EXPECT_EQ(two.newestNumber(), 7);
        [one.session stopRunning];
        [opened close];
        EXPECT_TRUE(camera->isOpen());
        camera->deliver(8);
        EXPECT_EQ(one.newestNumber(), 7);
        EXPECT_EQ(two.newestNumber(), 8);
    }
    EXPECT_TRUE(camera->isOpen());
    [opened close];
    EXPECT_FALSE(camera->isOpen());
    [opened open:NULL];
}

TEST_F(Sessions, KeepTheirCameraOpenUntilTheyStop) {
    Rig rig(opened, 16, 8);
    rig.run();
    [opened close];
    EXPECT_TRUE(camera->isOpen());
    camera->deliver(1);
    EXPECT_EQ(rig.seen.calls, 1);
    [rig.session stopRunning];
    EXPECT_FALSE(camera->isOpen());
    [opened open:NULL];
}

TEST_F(Sessions, LeaveOutFramesThatComeSoonerThanTheMinimumInterval) {
    Rig rig(opened, 16, 8);
    [rig.output setMinimumVideoFrameInterval:3600.0];
    rig.run();
    for (uint32_t number : {1u, 2u, 3u})
        camera->deliver(number);
    EXPECT_EQ(rig.seen.calls, 1);
    EXPECT_EQ(rig.newestNumber(), 1);
    [rig.output setMinimumVideoFrameInterval:0.0];
    camera->deliver(4);
    camera->deliver(5);
    EXPECT_EQ(rig.seen.calls, 3);
}

TEST_F(Sessions, WithoutADelegateFramesGoNowhere) {
    Rig rig(opened, 16, 8);
    [rig.output setDelegate:nil];
    rig.run();
    camera->deliver(1);
    EXPECT_EQ(rig.seen.calls, 0);
    EXPECT_EQ(camera->frames().alive, 0);
}

TEST_F(Sessions, RefuseAnInputWhoseCameraIsNotOpen) {
    attach("closed");
    Rig rig(device("closed"), 16, 8);
    EXPECT_FALSE(rig.inputAdded);
    EXPECT_EQ(textOf(rig.error), "the camera is not open");
    EXPECT_FALSE([rig.session addInput:nil error:NULL]);
    EXPECT_FALSE([rig.session addOutput:nil error:NULL]);
}

TEST_F(Sessions, RefusedInputCarriesTheCamerasReason) {
    camera->refuseInput(cameras::Error("reason", 5));
    Rig rig(opened, 16, 8);
    EXPECT_FALSE(rig.inputAdded);
    EXPECT_EQ(textOf(rig.error), "reason");
    EXPECT_EQ([rig.error code], 5);
}

TEST_F(Sessions, RefusedOutputLeavesASessionThatRunsWithoutFrames) {
    camera->refuseStart(cameras::Error("reason", 28));
    Rig rig(opened, 16, 8);
    EXPECT_TRUE(rig.inputAdded);
    EXPECT_FALSE(rig.outputAdded);
    EXPECT_EQ(textOf(rig.error), "reason");
    rig.run();
    EXPECT_TRUE([rig.session isRunning]);
    camera->refuseStart(cameras::Error());
    camera->deliver(1);
    EXPECT_EQ(rig.seen.calls, 0);
}

TEST_F(Sessions, RefuseSizesAndFormatsThatCannotBeDelivered) {
    const unsigned sizes[][2] = {{0, 0}, {0, 8}, {8, 0}, {16385, 8}, {8, 16385}, {0xFFFFFFFF, 0xFFFFFFFF}};
    for (const auto& size : sizes) {
        Rig rig(opened, size[0], size[1]);
        EXPECT_FALSE(rig.outputAdded) << size[0] << " x " << size[1];
        EXPECT_NE(textOf(rig.error).find(std::to_string(size[0]) + " x " + std::to_string(size[1])),
                  std::string::npos);
    }
    Rig rig(opened, 16, 8);
    QTCaptureDecompressedVideoOutput* const output = [[QTCaptureDecompressedVideoOutput alloc] init];
    [output
        setPixelBufferAttributes:[NSDictionary
                                     dictionaryWithObjectsAndKeys:[NSNumber numberWithUnsignedInt:32],
                                                                  (id)kCVPixelBufferPixelFormatTypeKey, nil]];
    EXPECT_FALSE([rig.session addOutput:output error:NULL]);
    [output release];
}

TEST_F(Sessions, ReleasedWhileRunningStop) {
    {
        Rig rig(opened, 16, 8);
        rig.run();
        EXPECT_TRUE(camera->isRunning());
    }
    EXPECT_FALSE(camera->isRunning());
    camera->deliver(1); // to nobody
}

TEST_F(Sessions, UnpluggedCameraEndsTheFramesButStoppingStillWorks) {
    Rig rig(opened, 16, 8);
    rig.run();
    camera->deliver(1);
    detach(camera);
    EXPECT_EQ(rig.newestNumber(), 1);
    [rig.session stopRunning];
    EXPECT_FALSE(camera->isRunning());
}
