// What a monitor is told of every kind of camera.
#include "platform/cameras/camera_monitor.h"

#include "base/monotonic_clock.h"
#include "unit/platform/cameras/contract/kinds.h"

#include <atomic>
#include <map>
#include <poll.h>
#include <thread>

namespace ostrel::tests {

namespace {

using cameras::CameraChange;
using cameras::CameraMonitor;
using Names = std::map<std::string, std::string>;

class Plugging : public testing::TestWithParam<KindOfCamera> {
protected:
    const std::unique_ptr<Kind> kind = GetParam().make();
    CameraMonitor monitor;

    static bool isReadable(const CameraMonitor& one) {
        pollfd descriptor = {one.descriptor(), POLLIN, 0};
        return ::poll(&descriptor, 1, 0) == 1;
    }
    static std::vector<std::string> take(CameraMonitor& from) {
        std::vector<std::string> result;
        for (const CameraChange& change : from.changes())
            result.push_back((change.added ? "+" : "-") + change.identifier);
        from.accept();
        return result;
    }
    // What comes next, waited for.
    std::vector<std::string> next() {
        const int64_t hang = std::chrono::duration_cast<std::chrono::nanoseconds>(support::HANG).count();
        EXPECT_TRUE(monitor.waitUntil(monotonicNanoseconds() + hang));
        return take(monitor);
    }
    static Names listed() {
        Names result;
        for (const auto& camera : cameras::attachedCameras())
            result[camera->identifier()] = camera->displayName();
        return result;
    }
    static void replay(const std::vector<CameraChange>& changes, Names& names) {
        for (const CameraChange& change : changes) {
            const bool known = names.count(change.identifier) == 1;
            EXPECT_NE(known, change.added) << change.identifier;
            if (change.added)
                names[change.identifier] = change.name;
            else
                names.erase(change.identifier);
        }
    }
};
OSTREL_FOR_EACH_KIND(Plugging);

using List = std::vector<std::string>;

} // namespace

TEST_P(Plugging, ACameraIsToldOfAndThenTheDescriptorIsQuiet) {
    EXPECT_FALSE(isReadable(monitor));
    const std::string identifier = kind->plug()->identifier();
    EXPECT_TRUE(isReadable(monitor));
    EXPECT_EQ(next(), (List{"+" + identifier}));
    EXPECT_EQ(monitor.cameras(), listed());
    EXPECT_FALSE(isReadable(monitor));
    kind->unplug();
    EXPECT_TRUE(isReadable(monitor));
    EXPECT_EQ(next(), (List{"-" + identifier}));
    EXPECT_EQ(monitor.cameras(), Names());
    EXPECT_FALSE(isReadable(monitor));
}

TEST_P(Plugging, ACameraThatWasPluggedInAnewIsBothGoneAndThere) {
    const std::string identifier = kind->plug()->identifier();
    next();
    kind->unplug();
    kind->plug();
    EXPECT_EQ(next(), (List{"-" + identifier, "+" + identifier}));
    kind->unplug();
    kind->plug();
    kind->unplug();
    EXPECT_EQ(next(), (List{"-" + identifier}));
    kind->plug();
    kind->unplug();
    EXPECT_EQ(take(monitor), List()) << "it came and left in the meantime";
}

TEST_P(Plugging, OfACameraThatIsCapturedFromTheEndIsToldAtOnce) {
    const auto camera = kind->plug();
    ASSERT_EQ(camera->open().text, "");
    const auto sink = std::make_shared<support::RecordingSink>();
    ASSERT_EQ(camera->start(64, 48, sink).text, "");
    ASSERT_TRUE(sink->waitForFrames(1));
    next();
    kind->unplug();
    EXPECT_EQ(next(), (List{"-" + camera->identifier()}));
    camera->stop(sink);
    camera->close();
    sink->drop();
}

TEST_P(Plugging, WhateverHappensInWhateverOrderTheChangesLeadToTheListing) {
    std::atomic<bool> over{false};
    std::thread hand([&] {
        for (int cycle = 0; cycle < 300; ++cycle) {
            kind->plug();
            if (cycle % 3)
                std::this_thread::yield();
            kind->unplug();
        }
        over = true;
    });
    Names names = monitor.cameras(), others = names;
    CameraMonitor lazy; // that is asked once
    others = lazy.cameras();
    while (!over) {
        replay(monitor.changes(), names);
        monitor.accept();
    }
    hand.join();
    kind->plug(); // on a thread that goes on: the program behind a camera ends with who started it
    replay(monitor.changes(), names);
    monitor.accept();
    replay(lazy.changes(), others);
    EXPECT_EQ(names, listed());
    EXPECT_EQ(names.size(), 1u);
    EXPECT_EQ(others, listed());
    kind->unplug();
}

} // namespace ostrel::tests
