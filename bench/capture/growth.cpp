#include "bench/capture/client.h"
#include "bench/capture/json.h"
#include "bench/capture/measure.h"
#include "bench/capture/suites.h"
#include "bench/capture/timed_kernel.h"

#include <ostrel/devices.h>

#include <deque>

namespace bench {

namespace {

const int64_t SECOND = 1000000000;

CameraModel model() {
    CameraModel result;
    result.width = 640;
    result.height = 480;
    return result;
}

// Microseconds of processor time for one call, on average over enough of them.
template <typename Call>
double timeOf(Call call) {
    const int calls = 20;
    const Cost before = costsSoFar();
    for (int i = 0; i < calls; ++i)
        call();
    return (costsSoFar() - before).microseconds / calls;
}

bool list(int cameras, int rounds) {
    plugIn(model(), cameras);
    const QString last = QString::fromStdString(identifierOf(cameras - 1));
    const auto info = ostrel::OVideoInfoUnix::ptr();
    std::vector<double> listing, lookUp;
    bool found = !last.isEmpty();
    for (int round = 0; round < rounds; ++round) {
        listing.push_back(timeOf([&] { qDeleteAll(info->devices()); }));
        lookUp.push_back(timeOf([&] { found = found && info->deviceByID(last); }));
    }
    JsonLine("listing")
        .add("cameras", cameras)
        .add("list_microseconds", median(listing))
        .add("look_up_microseconds", median(lookUp))
        .write();
    return found;
}

// Every frame of every camera taken, by one thread.
bool capture(int cameras, int rounds) {
    const std::shared_ptr<TimedKernel> kernel = plugIn(model(), cameras);
    const QuietErrors quiet;
    std::deque<Client> clients;
    for (int i = 0; i < cameras; ++i)
        clients.emplace_back(identifierOf(i), model().width, model().height);
    for (Client& client : clients)
        if (!client.waitForFrame(1))
            return false;
    std::vector<double> costs;
    for (int round = 0; round < rounds; ++round) {
        const int64_t start = monotonicNow();
        const int64_t interval = SECOND / model().rate;
        const Cost before = costsSoFar();
        for (int i = 0; i < static_cast<int>(model().rate); ++i) {
            for (Client& client : clients)
                client.poll();
            sleepUntil(start + (i + 1) * interval);
        }
        costs.push_back((costsSoFar() - before).microseconds / model().rate / cameras);
    }
    JsonLine("captures").add("cameras", cameras).add("microseconds", median(costs)).write();
    return true;
}

} // namespace

bool measureGrowth(int rounds) {
    for (int cameras = 1; cameras <= 64; cameras *= 2)
        if (!list(cameras, rounds))
            return false;
    for (int cameras = 1; cameras <= 16; cameras *= 2)
        if (!capture(cameras, rounds))
            return false;
    return true;
}

} // namespace bench
