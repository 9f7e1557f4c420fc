// What becomes of nodes, seen in a folder of the test's own.
#include "platform/cameras/v4l2/node_watch.h"

#include "support/gate.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ostrel::tests {

namespace {

using cameras::ChangeWatch;

class NodeWatchTest : public testing::Test {
protected:
    const std::string folder = testing::TempDir() + "nodes" + std::to_string(::getpid());

    NodeWatchTest() { std::filesystem::create_directory(folder); }
    ~NodeWatchTest() override { std::filesystem::remove_all(folder); }

    // One that never looks by itself unless a loopback device is there.
    std::unique_ptr<ChangeWatch> watch(bool tellAll = true) const {
        cameras::v4l2::NodeSources sources;
        sources.folder = folder;
        sources.tellAll = tellAll;
        sources.loopbacks = folder + "/loopbacks";
        return cameras::v4l2::watchNodes(sources);
    }
    std::string make(const std::string& name) const {
        std::ofstream(folder + '/' + name).put('x');
        return folder + '/' + name;
    }
    static bool isReadable(const ChangeWatch& one) {
        pollfd descriptor = {one.descriptor(), POLLIN, 0};
        return ::poll(&descriptor, 1, 0) == 1;
    }
    // What is told before anybody would look by himself; quiet afterwards.
    static bool tells(ChangeWatch& one) {
        const bool readable = isReadable(one);
        const bool changed = one.changed();
        EXPECT_FALSE(isReadable(one));
        return readable && changed;
    }
    // By itself, time and again.
    static bool looks(ChangeWatch& one) {
        for (int times = 0; times < 2; ++times) {
            pollfd descriptor = {one.descriptor(), POLLIN, 0};
            const auto hang = std::chrono::duration_cast<std::chrono::milliseconds>(support::HANG);
            if (::poll(&descriptor, 1, static_cast<int>(hang.count())) != 1 || !one.changed())
                return false;
        }
        return true;
    }
};

} // namespace

TEST_F(NodeWatchTest, TellsOfNodesThatAreMadeRenamedAndRemoved) {
    const auto watch = this->watch();
    EXPECT_FALSE(isReadable(*watch));
    EXPECT_FALSE(watch->changed());
    make("video0");
    EXPECT_TRUE(tells(*watch));
    std::filesystem::rename(folder + "/video0", folder + "/away");
    EXPECT_TRUE(tells(*watch));
    std::filesystem::rename(folder + "/away", folder + "/video1");
    EXPECT_TRUE(tells(*watch));
    std::filesystem::remove(folder + "/video1");
    EXPECT_TRUE(tells(*watch));
}

TEST_F(NodeWatchTest, TellsOfPermissionsThatComeLate) {
    const std::string node = make("video0");
    const auto watch = this->watch();
    ASSERT_EQ(::chmod(node.c_str(), 0600), 0);
    EXPECT_TRUE(tells(*watch));
    ASSERT_EQ(::chown(node.c_str(), ::getuid(), ::getgid()), 0);
    EXPECT_TRUE(tells(*watch));
}

TEST_F(NodeWatchTest, OtherDevicesAreNoNews) {
    const auto watch = this->watch();
    make("tty7");
    make("vide");
    EXPECT_FALSE(tells(*watch));
}

// The queue of the kernel ends with a message that says no more than that some are missing.
TEST_F(NodeWatchTest, WhatTheKernelCouldNotKeepCountsAsAChange) {
    int most = 0;
    std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> most;
    ASSERT_GT(most, 0);
    make("tty7");
    const auto watch = this->watch();
    for (int events = 0; events <= most; events += 4) { // a rename is two
        std::filesystem::rename(folder + "/tty7", folder + "/tty8");
        std::filesystem::rename(folder + "/tty8", folder + "/tty7");
    }
    make("video0");
    EXPECT_TRUE(tells(*watch));
}

TEST_F(NodeWatchTest, LooksByItselfWhereNotAllIsTold) {
    EXPECT_TRUE(looks(*watch(false)));
}

TEST_F(NodeWatchTest, LooksByItselfWhileThereAreLoopbackDevices) {
    const auto watch = this->watch();
    make("loopbacks");
    make("video0"); // the device's node
    EXPECT_TRUE(watch->changed());
    EXPECT_TRUE(looks(*watch));
}

TEST_F(NodeWatchTest, LooksByItselfInAFolderThatHasGone) {
    const auto watch = this->watch();
    std::filesystem::remove_all(folder);
    EXPECT_TRUE(tells(*watch));
    EXPECT_TRUE(looks(*watch));
    EXPECT_TRUE(looks(*this->watch()));
}

} // namespace ostrel::tests
