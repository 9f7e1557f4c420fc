// What captures of one camera owe each other, and what a stop owes a start-up that it overtakes.
#include "driver_test.h"

#include <ostrel/camera_state.h>

#include <future>
#include <iostream>
#include <streambuf>

using namespace ostrel;
using support::numberIn;

namespace {

class Neighbours : public support::DriverTest {
protected:
    static QString refusedAs(const char* identifier) { return OVideoCameraState(identifier).refused(); }
};

// Holds back the thread that writes a certain line to the standard error stream.
class HeldLine : public std::streambuf {
public:
    explicit HeldLine(const std::string& line) : line_(line), before_(std::cerr.rdbuf(this)) { gate.shut(); }
    ~HeldLine() override { std::cerr.rdbuf(before_); }

    support::Gate gate;

protected:
    std::streamsize xsputn(const char* bytes, std::streamsize count) override {
        if (std::string(bytes, static_cast<size_t>(count)) == line_)
            gate.pass();
        return count;
    }
    int overflow(int c) override { return c; }

private:
    const std::string line_;
    std::streambuf* const before_;
};

} // namespace

TEST_F(Neighbours, ADriverWhoseOpenFailedTakesNothingWhenItIsDropped) {
    const auto camera = attach("camera");
    camera->refuseOpen(cameras::Error("busy for a moment", EBUSY));
    auto refused = started("camera", 16, 8);
    camera->refuseOpen(cameras::Error());
    const auto captured = started("camera", 16, 8);
    camera->deliver(1);
    refused.reset();
    EXPECT_TRUE(camera->isOpen());
    EXPECT_TRUE(OVideoCameraState("camera").isOpen());
    camera->deliver(2);
    EXPECT_EQ(numberIn(poll(*captured)), 2);
    captured->stopVideoCapture();
    EXPECT_FALSE(camera->isOpen());
}

TEST_F(Neighbours, AStopReachesASessionWhoseStartUpHasNotReturned) {
    const auto camera = attach("camera");
    OVideoCaptureMacX driver;
    {
        HeldLine held(">>> session stopped\n"); // written when the session runs already
        driver.startCapture("camera", 16, 8);
        held.gate.awaitArrivals(1);
        EXPECT_TRUE(camera->isRunning());
        driver.stopVideoCapture();
        EXPECT_FALSE(camera->isRunning()) << "nothing is delivered once the stop has returned";
        held.gate.open();
        driver.wait();
    }
    EXPECT_FALSE(camera->isOpen());
}

TEST_F(Neighbours, APictureThatIsMadeSlowlyHoldsUpNobodyElse) {
    const auto camera = attach("camera");
    const auto other = started("camera", 16, 8);
    // A driver is used from one thread.
    std::promise<void> stopped;
    std::shared_future<void> stop = stopped.get_future().share();
    std::promise<void> running;
    camera->frames().gate.shut();
    auto slow = std::async(std::launch::async, [&, stop] {
        const auto driver = started("camera", 16, 8);
        camera->deliver(1);
        camera->frames().holdsNext = true;
        running.set_value();
        const int number = numberIn(poll(*driver)); // held while it makes the picture
        stop.wait();
        return number;
    });
    running.get_future().wait();
    camera->frames().gate.awaitArrivals(1);
    auto delivery = std::async(std::launch::async, [&] {
        camera->deliver(2);
        camera->deliver(3);
    });
    EXPECT_EQ(delivery.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    EXPECT_EQ(numberIn(poll(*other)), 3);
    camera->frames().gate.open();
    stopped.set_value();
    EXPECT_EQ(slow.get(), 1);
    delivery.get();
}

TEST_F(Neighbours, AStartThatGaveNoFramesSaysWhereItWasRefusedAndWhy) {
    const auto camera = attach("refusing");
    const struct {
        void (support::ScriptedCamera::*refuse)(const cameras::Error&);
        OVideoCameraState::RefusedAt where;
    } stages[] = {{&support::ScriptedCamera::refuseOpen, OVideoCameraState::REFUSED_AT_OPENING},
                  {&support::ScriptedCamera::refuseInput, OVideoCameraState::REFUSED_AT_INPUT},
                  {&support::ScriptedCamera::refuseStart, OVideoCameraState::REFUSED_AT_OUTPUT}};
    EXPECT_FALSE(OVideoCameraState("refusing").isKnown());
    for (const auto& stage : stages) {
        (*camera.*stage.refuse)(cameras::Error("not \xC3\xBC"
                                               "ber here",
                                               EBUSY));
        started("refusing", 16, 8); // and dropped
        const OVideoCameraState state("refusing");
        EXPECT_TRUE(state.isKnown());
        EXPECT_EQ(state.refusedAt(), stage.where);
        EXPECT_EQ(state.whyNoFrames(), QString::fromUtf8("not \xC3\xBC"
                                                         "ber here"));
        (*camera.*stage.refuse)(cameras::Error());
        started("refusing", 16, 8);
        EXPECT_EQ(refusedAs("refusing"), QString()) << "the next start has its own reasons";
    }
}
