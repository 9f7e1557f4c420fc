// A listing waits for no hardware in use, and for none that another listing waits for.
#include "support/gate.h"
#include "unit/platform/cameras/v4l2/listing_fixture.h"

#include <chrono>
#include <future>
#include <thread>

namespace ostrel::tests {

using cameras::v4l2::NodeFacts;

namespace {

using List = std::vector<std::string>;

// One node takes as long to open as the test likes.
class SlowKernel : public ScriptedKernel {
public:
    support::Gate gate;
    std::atomic<int> opened{0}; // how often the slow node was

protected:
    int doOpen(const char* path, int flags) override {
        if (std::string(path) == "/dev/video0") {
            ++opened;
            gate.pass();
        }
        return ScriptedKernel::doOpen(path, flags);
    }
};

class WaitingTest : public ListingTest {
protected:
    std::shared_ptr<SlowKernel> slow = std::make_shared<SlowKernel>();

    WaitingTest() {
        kernel = slow;
        provider = cameras::v4l2::makeProvider(kernel, discovery);
    }
    // The listing, which has to be there in less time than anybody would notice.
    List listed() {
        const auto before = std::chrono::steady_clock::now();
        auto listing = std::async(std::launch::async, [this] { return identifiers(); });
        EXPECT_EQ(listing.wait_for(std::chrono::milliseconds(300)), std::future_status::ready);
        if (listing.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
            slow->gate.open(); // the test has failed, and shall end
        const List result = listing.get();
        EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(300));
        return result;
    }
};

} // namespace

TEST_F(WaitingTest, AListingGoesOnWithoutANodeThatAnotherListingIsAsking) {
    addBare("/dev/video0", cameraWith("slow"));
    addBare("/dev/video1", cameraWith("quick"));
    slow->gate.shut();
    auto first = std::async(std::launch::async, [this] { return identifiers(); });
    slow->gate.awaitArrivals(1);
    EXPECT_EQ(listed(), List{"bus-quick-Scripted%20Camera"});
    slow->gate.open();
    EXPECT_EQ(first.get(), (List{"bus-slow-Scripted%20Camera", "bus-quick-Scripted%20Camera"}));
    EXPECT_EQ(listed().size(), 2u);
    EXPECT_EQ(slow->opened, 1);
}

TEST_F(WaitingTest, AListingTakesTheOldAnswerWhileAnotherListingIsAskingAgain) {
    kernel->plug("/dev/video0", cameraWith("virtual"));
    NodeFacts facts;
    facts.path = "/dev/video0";
    facts.isVirtual = true;
    discovery->add(facts);
    const List before = identifiers();
    ASSERT_EQ(before.size(), 1u);
    slow->gate.shut();
    auto first = std::async(std::launch::async, [this] { return identifiers(); });
    slow->gate.awaitArrivals(2);
    EXPECT_EQ(listed(), before);
    slow->gate.open();
    EXPECT_EQ(first.get(), before);
}

TEST_F(WaitingTest, AListingWaitsForNoCameraThatIsBeingOpened) {
    addBare("/dev/video0", cameraWith("slow"));
    addBare("/dev/video1", cameraWith("quick"));
    const auto cameras = provider->list();
    ASSERT_EQ(cameras.size(), 2u);
    slow->gate.shut();
    auto opening = std::async(std::launch::async, [&] { return cameras[0]->open().code; });
    slow->gate.awaitArrivals(2);
    EXPECT_EQ(listed().size(), 2u);
    slow->gate.open();
    EXPECT_EQ(opening.get(), 0);
    cameras[0]->close();
}

TEST_F(WaitingTest, AListingMakesNoCallOnANodeThatIsOpenHere) {
    kernel->plug("/dev/video0", cameraWith("virtual"));
    kernel->plug("/dev/video1", cameraWith("real"));
    NodeFacts facts;
    facts.path = "/dev/video0";
    facts.isVirtual = true;
    discovery->add(facts);
    facts.path = "/dev/video1";
    facts.isVirtual = false;
    discovery->add(facts);
    const auto cameras = provider->list();
    ASSERT_EQ(cameras.size(), 2u);
    for (const auto& one : cameras)
        ASSERT_EQ(one->open().code, 0);
    const int opens = kernel->calls(OPEN), questions = kernel->calls(VIDIOC_QUERYCAP),
              formats = kernel->calls(VIDIOC_ENUM_FMT);
    EXPECT_EQ(provider->list(), cameras);
    EXPECT_EQ(provider->nodes().size(), 2u);
    EXPECT_EQ(kernel->calls(OPEN), opens);
    EXPECT_EQ(kernel->calls(VIDIOC_QUERYCAP), questions);
    EXPECT_EQ(kernel->calls(VIDIOC_ENUM_FMT), formats);
    for (const auto& one : cameras)
        one->close();
    provider->list(); // the virtual one is asked again now
    EXPECT_EQ(kernel->calls(OPEN), opens + 1);
}

TEST_F(WaitingTest, AskingWhetherACameraIsAttachedMakesNoCallOnItsNode) {
    addBare("/dev/video1", camera());
    const auto one = provider->list().at(0);
    ASSERT_EQ(one->open().code, 0);
    const int questions = kernel->calls(VIDIOC_QUERYCAP);
    EXPECT_TRUE(one->attached());
    EXPECT_EQ(kernel->calls(VIDIOC_QUERYCAP), questions);
    one->close();
}

TEST_F(WaitingTest, AFailedQuestionIsAskedAgainByTheNextListing) {
    addBare("/dev/video0", camera());
    kernel->failNext(OPEN, EBUSY);
    EXPECT_EQ(identifiers().size(), 1u); // listed as a camera that may not be opened
    EXPECT_EQ(slow->opened, 1);
    EXPECT_EQ(identifiers(), List{"bus-usb-0000:00:14.0-1-Scripted%20Camera"});
    EXPECT_EQ(slow->opened, 2);
}

} // namespace ostrel::tests
