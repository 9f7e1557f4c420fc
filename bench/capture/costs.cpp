#include "bench/capture/client.h"
#include "bench/capture/floor.h"
#include "bench/capture/json.h"
#include "bench/capture/measure.h"
#include "bench/capture/suites.h"

#include <functional>

namespace bench {

namespace {

const int64_t SECOND = 1000000000;
const int WARM_UP = 6; // frames
const char* const PATH = "/dev/video0";

struct Layout {
    const char* name;
    uint32_t fourcc;
};
const Layout LAYOUTS[] = {
    {"YUYV", V4L2_PIX_FMT_YUYV}, {"NV12", V4L2_PIX_FMT_NV12}, {"MJPEG", V4L2_PIX_FMT_MJPEG}};

struct Size {
    int width, height;
};
const Size SIZES[] = {{320, 240}, {640, 480}, {1280, 720}};

std::string nameOf(const Layout& layout, const Size& size) {
    return std::string(layout.name) + " " + std::to_string(size.width) + "x" + std::to_string(size.height);
}

// How often a client polls, in parts of a camera's 30 frames a second.
struct Habit {
    const char* name;
    unsigned polls; // a second
};
const Habit HABITS[] = {{"taken", 30}, {"polled at 60 Hz", 60}, {"polled at 10 Hz", 10}, {"not polled", 0}};

// Measured in turn; the costs of one round each.
struct Contender {
    std::string name;
    std::vector<double> microseconds; // for each of the camera's frames
    Cost total;
    int streamCalls = 0;
    uint64_t frames = 0;
    uint64_t fresh = 0; // polls that gave another frame than the one before
};

void note(Contender& contender, const Cost& cost, unsigned frames) {
    contender.microseconds.push_back(cost.microseconds / frames);
    contender.total.pageFaults += cost.pageFaults;
    contender.total.allocations += cost.allocations;
    contender.total.largeAllocations += cost.largeAllocations;
    contender.total.wakeUps += cost.wakeUps;
    contender.frames += frames;
}

void runFloor(const std::shared_ptr<TimedKernel>& kernel, const CameraModel& model, Contender& contender,
              void (Floor::*work)()) {
    Floor bare(kernel, model);
    for (int i = 0; i < WARM_UP; ++i)
        (bare.*work)();
    const int calls = kernel->streamCalls(PATH);
    const Cost before = costsSoFar();
    for (unsigned i = 0; i < model.rate; ++i)
        (bare.*work)();
    note(contender, costsSoFar() - before, model.rate);
    contender.streamCalls += kernel->streamCalls(PATH) - calls;
}

// One second of a client that polls at equal intervals, half an interval or more away from the arrivals.
void runHabit(Client& client, TimedKernel& kernel, const CameraModel& model, const Habit& habit,
              Contender& contender) {
    const unsigned polls = habit.polls ? habit.polls : model.rate;
    const int64_t interval = SECOND / polls;
    const int64_t period = model.period(), arrival = kernel.arrival(PATH, 0);
    // From a time at which the camera has just had half of its interval.
    const int64_t lead = period / (habit.polls > model.rate ? 4 : 2);
    const int64_t passed = (monotonicNow() - arrival) / period + 1;
    const int64_t start = arrival + passed * period + lead;
    for (int i = 0; i < WARM_UP; ++i) {
        sleepUntil(start + i * period);
        if (habit.polls)
            client.poll();
    }
    const int64_t first = start + WARM_UP * period;
    sleepUntil(first - period / 8);
    const int calls = kernel.streamCalls(PATH);
    uint32_t last = 0;
    const Cost before = costsSoFar();
    for (unsigned i = 0; i < habit.polls; ++i) {
        sleepUntil(first + static_cast<int64_t>(i) * interval);
        const ostrel::VideoFrame& frame = client.poll();
        contender.fresh += frame.frameNumber != last;
        last = frame.frameNumber;
    }
    sleepUntil(first + SECOND - period / 8);
    note(contender, costsSoFar() - before, model.rate);
    contender.streamCalls += kernel.streamCalls(PATH) - calls;
}

void write(const Contender& contender, const Layout& layout, const Size& size) {
    const auto frames = static_cast<double>(contender.frames);
    JsonLine("cost")
        .add("camera", nameOf(layout, size))
        .add("contender", contender.name)
        .add("microseconds", median(contender.microseconds))
        .add("rounds", contender.microseconds)
        .add("frames", frames)
        .add("fresh_frames", static_cast<double>(contender.fresh))
        .add("page_faults", static_cast<double>(contender.total.pageFaults))
        .add("large_allocations", static_cast<double>(contender.total.largeAllocations))
        .add("allocations_per_frame", static_cast<double>(contender.total.allocations) / frames)
        .add("sleeps_per_frame", static_cast<double>(contender.total.wakeUps) / frames)
        .add("queue_calls_per_frame", static_cast<double>(contender.streamCalls) / frames)
        .write();
}

bool measure(const Layout& layout, const Size& size, int rounds) {
    CameraModel model;
    model.fourcc = layout.fourcc;
    model.width = size.width;
    model.height = size.height;
    const std::shared_ptr<TimedKernel> kernel = plugIn(model);
    std::vector<Contender> contenders(2);
    contenders[0].name = "floor";
    contenders[1].name = "floor, not polled";
    for (const Habit& habit : HABITS) {
        contenders.emplace_back();
        contenders.back().name = habit.name;
    }
    for (int round = 0; round < rounds; ++round) {
        runFloor(kernel, model, contenders[0], &Floor::takeFrame);
        runFloor(kernel, model, contenders[1], &Floor::passFrame);
        const QuietErrors quiet;
        Client client(identifierOf(0), size.width, size.height);
        if (!client.waitForFirstFrame())
            return false;
        for (size_t i = 0; i < sizeof HABITS / sizeof HABITS[0]; ++i)
            runHabit(client, *kernel, model, HABITS[i], contenders[i + 2]);
    }
    for (const Contender& contender : contenders)
        write(contender, layout, size);
    return true;
}

} // namespace

bool measureCosts(int rounds, const std::string& only) {
    for (const Layout& layout : LAYOUTS)
        for (const Size& size : SIZES)
            if (nameOf(layout, size).find(only) != std::string::npos && !measure(layout, size, rounds))
                return false;
    return true;
}

} // namespace bench
