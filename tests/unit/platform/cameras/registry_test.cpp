#include "support/machine.h"

#include <gtest/gtest.h>

namespace ostrel::tests {

using cameras::Camera;
using cameras::Error;

namespace {

class NamedCamera : public Camera {
public:
    explicit NamedCamera(const std::string& identifier) : identifier_(identifier) {}
    std::string identifier() const override { return identifier_; }
    std::string displayName() const override { return identifier_; }
    Error open() override { return Error(); }
    void close() override {}
    Error start(int, int, const std::shared_ptr<cameras::FrameSink>&) override { return Error(); }
    void stop(const std::shared_ptr<cameras::FrameSink>&) override {}

private:
    const std::string identifier_;
};

class FixedProvider : public cameras::CameraProvider {
public:
    std::vector<std::shared_ptr<Camera>> list() override { return cameras; }
    std::vector<std::shared_ptr<Camera>> cameras;
};

std::shared_ptr<Camera> named(const std::string& identifier) {
    return std::make_shared<NamedCamera>(identifier);
}

std::vector<std::string> listed() {
    std::vector<std::string> result;
    for (const auto& camera : cameras::attachedCameras())
        result.push_back(camera->identifier());
    return result;
}

class RegistryTest : public testing::Test {
protected:
    const std::shared_ptr<FixedProvider> own = std::make_shared<FixedProvider>();
    support::Machine machine{own};
};

} // namespace

TEST_F(RegistryTest, ListsTheMachinesCamerasFirstThenTheAddedOnesInTheirOrder) {
    own->cameras = {named("m1"), named("m2")};
    const auto a = named("a"), b = named("b");
    EXPECT_TRUE(cameras::addCamera(b));
    EXPECT_TRUE(cameras::addCamera(a));
    EXPECT_EQ(listed(), (std::vector<std::string>{"m1", "m2", "b", "a"}));
    own->cameras.pop_back();
    EXPECT_EQ(listed(), (std::vector<std::string>{"m1", "b", "a"}));
    cameras::removeCamera(b);
    cameras::removeCamera(a);
    EXPECT_EQ(listed(), (std::vector<std::string>{"m1"}));
}

TEST_F(RegistryTest, RefusesAnIdentifierThatWasAdded) {
    const auto a = named("camera-1");
    EXPECT_TRUE(cameras::addCamera(a));
    EXPECT_FALSE(cameras::addCamera(named("camera-1")));
    const auto longer = named("camera-11"); // compared whole
    EXPECT_TRUE(cameras::addCamera(longer));
    cameras::removeCamera(longer);
    cameras::removeCamera(a);
    EXPECT_TRUE(listed().empty());
}

TEST_F(RegistryTest, RemovesTheObjectGivenAndNoneOfTheSameName) {
    const auto a = named("a");
    cameras::addCamera(a);
    cameras::removeCamera(named("a"));
    EXPECT_EQ(listed().size(), 1u);
    cameras::removeCamera(a);
}

TEST_F(RegistryTest, WorksWithoutAProvider) {
    cameras::setProviders({});
    EXPECT_TRUE(listed().empty());
}

} // namespace ostrel::tests
