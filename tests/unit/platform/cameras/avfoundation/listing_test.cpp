// What is found, and when it is noticed.
#include "unit/platform/cameras/avfoundation/fixture.h"

#include <set>

namespace ostrel::tests {

class AvListing : public AvFoundationTest {
protected:
    void plug(const std::string& identifier, const std::string& name = "Camera") {
        device.identifier = identifier;
        device.name = name;
        standin::plug(device);
    }
    std::set<std::string> listed() const {
        std::set<std::string> names;
        for (const auto& one : provider->list())
            names.insert(one->identifier() + '=' + one->displayName());
        return names;
    }
};

TEST_F(AvListing, NamesCamerasAsTheSystemDoesAndNamelessOnesByTheirIdentifier) {
    EXPECT_EQ(listed(), std::set<std::string>());
    plug("0x1", "FaceTime HD Camera");
    plug("0x2", "K\xc3\xa4mera");
    plug("0x3", "");
    EXPECT_EQ(listed(), (std::set<std::string>{"0x1=FaceTime HD Camera", "0x2=K\xc3\xa4mera", "0x3=0x3"}));
}

TEST_F(AvListing, TakesCamerasThatArePluggedInAndLeavesOutTheRest) {
    device.type = "AVCaptureDeviceTypeExternal"; // a name that is looked for at run time
    plug("external");
    device.type = "AVCaptureDeviceTypeDeskViewCamera";
    plug("desk view");
    EXPECT_EQ(listed(), (std::set<std::string>{"external=Camera"}));
}

TEST_F(AvListing, ACameraThatStaysIsTheSameObjectAndOneThatIsPluggedInAgainAnother) {
    plug("A");
    const auto first = provider->list().at(0);
    plug("B");
    EXPECT_EQ(provider->list().at(0), first);
    standin::unplug("A");
    plug("A");
    for (const auto& one : provider->list())
        EXPECT_NE(one, first);
    EXPECT_EQ(listed().size(), 2u);
    EXPECT_FALSE(first->attached());
}

// A console program has no main run loop that turns; the framework notices nothing without one.
TEST_F(AvListing, TurnsTheMainRunLoopOfAProgramThatDoesNot) {
    plug("A");
    EXPECT_EQ(listed().size(), 1u);
    standin::freezeList();
    plug("B");
    standin::unplug("A");
    EXPECT_EQ(listed(), (std::set<std::string>{"B=Camera"}));
}

TEST_F(AvListing, LeavesARunLoopAloneThatTurnsAlready) {
    standin::setLoopTurning(true);
    provider->list();
    EXPECT_EQ(standin::loopTurns(), 0);
    standin::setLoopTurning(false);
    provider->list();
    EXPECT_EQ(standin::loopTurns(), 1);
}

TEST_F(AvListing, NeverTurnsARunLoopOnAnotherThread) {
    plug("A");
    std::thread other([&] { EXPECT_EQ(provider->list().size(), 1u); });
    other.join();
    EXPECT_EQ(standin::loopTurns(), 0);
}

TEST_F(AvListing, ListsFromManyThreadsWhileCamerasComeAndGo) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int j = 0; j < 50; ++j)
                EXPECT_LE(provider->list().size(), 2u);
        });
    for (int i = 0; i < 50; ++i) {
        plug("A");
        plug("B");
        standin::unplug("A");
        standin::unplug("B");
    }
    for (std::thread& one : threads)
        one.join();
}

} // namespace ostrel::tests
