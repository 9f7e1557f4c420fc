#include "unit/failure/failing_allocations.h"

#include <ostrel/device_monitor.h>

#include "support/camera_test.h"

#include <memory>
#include <poll.h>

using namespace ostrel;
using namespace ostrel::tests;

namespace {

const char* const IDENTIFIER = "camera-with-an-identifier-too-long-for-the-string-object-itself";

class MonitorWithoutMemory : public support::CameraTest {};

} // namespace

TEST_F(MonitorWithoutMemory, ThatIsBeingMade) {
    attach(IDENTIFIER, "A name too long for the string object itself");
    EXPECT_GE(failEachInTurn([](int n) { return runFailingAt(n, [] { OVideoDeviceMonitor monitor; }); }), 5);
}

TEST_F(MonitorWithoutMemory, LosesNoChange) {
    EXPECT_GE(failEachInTurn([](int n) {
                  OVideoDeviceMonitor monitor;
                  const auto camera = std::make_shared<support::ScriptedCamera>(IDENTIFIER);
                  EXPECT_TRUE(cameras::addCamera(camera));
                  QList<OVideoDeviceChange> changes;
                  const Outcome outcome = runFailingAt(n, [&] { changes = monitor.take(); });
                  if (outcome.thrown) {
                      pollfd descriptor = {monitor.descriptor(), POLLIN, 0};
                      EXPECT_EQ(::poll(&descriptor, 1, 0), 1);
                      EXPECT_TRUE(monitor.cameras().isEmpty());
                      changes = monitor.take();
                  }
                  EXPECT_EQ(changes.size(), 1);
                  EXPECT_TRUE(monitor.cameras().contains(IDENTIFIER));
                  cameras::removeCamera(camera);
                  return outcome;
              }),
              5);
}
