// A connection that the program hands over.
#include "unit/platform/cameras/pipewire/pipewire_test.h"

#include <ostrel/pipewire.h>
#include <ostrel/virtual_camera.h>

#include "base/monotonic_clock.h"
#include "platform/cameras/pipewire/daemon.h"
#include "support/process_figures.h"

#include <csignal>
#include <cstdlib>
#include <sys/socket.h>
#include <unistd.h>

namespace ostrel::tests {

using support::PipeWireCamera;

class PipeWireRemote : public PipeWireTest {
protected:
    const std::shared_ptr<cameras::CameraProvider> ofProcess = cameras::pipewire::makeProvider();

    // The session where nothing finds it by itself, as in a sandbox.
    int connectAndHide() {
        const int descriptor = cameras::pipewire::connectToDaemon();
        ::setenv("XDG_RUNTIME_DIR", "/nonexistent", 1);
        return descriptor;
    }
    void TearDown() override {
        PipeWireTest::TearDown();
        EXPECT_TRUE(setPipeWireRemote(-1));
    }
};

TEST_F(PipeWireRemote, ListingAndCaptureUseTheDescriptorThatWasHandedOver) {
    const PipeWireCamera one("one", {"sizes=64x48"});
    const int descriptor = connectAndHide();
    EXPECT_TRUE(ofProcess->list().empty());
    EXPECT_EQ(OVideoPipeWire().state(), OVideoPipeWire::NO_DAEMON);
    QString why;
    ASSERT_TRUE(setPipeWireRemote(descriptor, &why)) << why.toStdString();
    EXPECT_EQ(::close(descriptor), 0) << "the caller's stays the caller's";
    for (int i = 0; i < 3; ++i) {
        const auto all = ofProcess->list();
        ASSERT_EQ(all.size(), 1u);
        camera = all.front();
        sink = std::make_shared<support::RecordingSink>();
        ASSERT_EQ(camera->open().text, "");
        ASSERT_EQ(camera->start(64, 48, sink).text, "");
        ASSERT_TRUE(sink->waitForFrames(2));
        camera->close();
    }
    EXPECT_EQ(OVideoPipeWire().state(), OVideoPipeWire::CONNECTED);
    EXPECT_EQ(OVideoPipeWire().where(), QString("a descriptor"));
    ASSERT_TRUE(setPipeWireRemote(-1));
    EXPECT_TRUE(ofProcess->list().empty());
}

TEST_F(PipeWireRemote, ADescriptorBehindWhichNobodyAnswersIsRefusedAndNothingChanges) {
    const PipeWireCamera one("one");
    int pair[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair), 0);
    const int64_t begin = monotonicNanoseconds();
    QString why;
    EXPECT_FALSE(setPipeWireRemote(pair[0], &why));
    EXPECT_EQ(why, QString("nobody answers at that descriptor as PipeWire does"));
    EXPECT_GE(monotonicNanoseconds() - begin, NANOSECONDS_PER_SECOND);
    ::close(pair[0]);
    ::close(pair[1]);
    EXPECT_FALSE(setPipeWireRemote(9999, &why));
    EXPECT_EQ(ofProcess->list().size(), 1u) << "the session's daemon as before";
}

TEST_F(PipeWireRemote, AConnectionThatEndsTakesItsCamerasWithIt) {
    const PipeWireCamera one("one");
    const int descriptor = connectAndHide();
    ASSERT_TRUE(setPipeWireRemote(descriptor));
    ::close(descriptor);
    ASSERT_EQ(ofProcess->list().size(), 1u);
    session.daemon().end(SIGKILL);
    EXPECT_TRUE(comesTrue([&] { return OVideoPipeWire().state() == OVideoPipeWire::NO_DAEMON; }));
    EXPECT_TRUE(ofProcess->list().empty());
}

TEST_F(PipeWireRemote, WhatIsThereIsTold) {
    const PipeWireCamera one("one"), other("other");
    support::Program screen({OSTREL_PIPEWIRE_CAMERA, "screen", "role=Screen"});
    ASSERT_TRUE(screen.waitForLine("paused"));
    OVideoTestPatternCamera another("pipewire-another", "Of this program");
    ASSERT_TRUE(another.attach());
    const OVideoPipeWire seen;
    EXPECT_EQ(seen.state(), OVideoPipeWire::CONNECTED);
    EXPECT_EQ(seen.where().toStdString(), session.socket());
    EXPECT_TRUE(seen.hasSessionManager());
    EXPECT_EQ(seen.cameras(), 2);
    EXPECT_EQ(seen.addedCameras(), 2);
    EXPECT_EQ(seen.otherSources(), 1);
    EXPECT_NE(seen.version(), QString());
    session.manager().end(SIGKILL);
    EXPECT_TRUE(comesTrue([] { return !OVideoPipeWire().hasSessionManager(); }));
}

} // namespace ostrel::tests
