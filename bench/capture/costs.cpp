#include "bench/capture/client.h"
#include "bench/capture/floor.h"
#include "bench/capture/json.h"
#include "bench/capture/measure.h"
#include "bench/capture/suites.h"

#include <algorithm>

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
const Habit HABITS[] = {{"taken", 30},
                        {"polled at 60 Hz", 60},
                        {"polled at 120 Hz", 120},
                        {"polled at 10 Hz", 10},
                        {"not polled", 0}};

// What a client that waits has its pictures written in.
struct Pixels {
    const char* name;
    ostrel::OVideoPixels format;
    OutputFormat inside;
};
const Pixels PIXELS[] = {{"BGRA", ostrel::OVIDEO_PIXELS_BGRA, OutputFormat::Bgra},
                         {"BGR", ostrel::OVIDEO_PIXELS_BGR, OutputFormat::Bgr},
                         {"grey", ostrel::OVIDEO_PIXELS_GREY, OutputFormat::Grey}};

// Measured in turn; the costs of one round each.
struct Contender {
    std::string name;
    std::vector<double> microseconds; // for each of the camera's frames
    Cost total;
    int streamCalls = 0;
    uint64_t frames = 0;
    uint64_t fresh = 0;   // polls that gave another frame than the one before
    uint64_t wakeUps = 0; // of the client's own thread, where it waits
};

void note(Contender& contender, const Cost& cost, unsigned frames) {
    contender.microseconds.push_back(cost.microseconds / frames);
    contender.total.pageFaults += cost.pageFaults;
    contender.total.allocations += cost.allocations;
    contender.total.largeAllocations += cost.largeAllocations;
    contender.total.wakeUps += cost.wakeUps;
    contender.frames += frames;
}

// One second of frames, each of which work() waits for.
template <typename Work>
void runFrames(TimedKernel& kernel, const CameraModel& model, Contender& contender, Work work) {
    for (int i = 0; i < WARM_UP; ++i)
        work();
    const int calls = kernel.streamCalls(PATH);
    const uint64_t wakeUps = ownWakeUps();
    const Cost before = costsSoFar();
    for (unsigned i = 0; i < model.rate; ++i)
        work();
    note(contender, costsSoFar() - before, model.rate);
    contender.wakeUps += ownWakeUps() - wakeUps;
    contender.streamCalls += kernel.streamCalls(PATH) - calls;
}

// One second of a client that polls at equal intervals, half an interval or more away from the arrivals.
void runHabit(Client& client, TimedKernel& kernel, const CameraModel& model, const Habit& habit,
              Contender& contender) {
    const unsigned polls = habit.polls ? habit.polls : model.rate;
    const int64_t interval = SECOND / polls;
    const int64_t period = model.period(), arrival = kernel.arrival(PATH, 0);
    // From a time at which the camera has just had half of its interval, or of a poll's.
    const int64_t lead = std::min(period, interval) / 2;
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
        .add("own_wake_ups_per_frame", static_cast<double>(contender.wakeUps) / frames)
        .add("sleeps_per_frame", static_cast<double>(contender.total.wakeUps) / frames)
        .add("queue_calls_per_frame", static_cast<double>(contender.streamCalls) / frames)
        .write();
}

// All contenders of a camera, by name, in the order in which they first ran.
class Contest {
public:
    Contender& operator[](const std::string& name) {
        for (const auto& each : contenders_)
            if (each->name == name)
                return *each;
        contenders_.push_back(std::make_unique<Contender>());
        contenders_.back()->name = name;
        return *contenders_.back();
    }
    void write(const Layout& layout, const Size& size) const {
        for (const auto& each : contenders_)
            bench::write(*each, layout, size);
    }

private:
    std::vector<std::unique_ptr<Contender>> contenders_;
};

void runFloors(const std::shared_ptr<TimedKernel>& kernel, const CameraModel& model, uint8_t* mine,
               Contest& contest) {
    {
        Floor bare(kernel, model, mine);
        runFrames(*kernel, model, contest["floor"], [&] { bare.takeFrame(); });
        runFrames(*kernel, model, contest["floor, not polled"], [&] { bare.passFrame(); });
        for (const Pixels& pixels : PIXELS)
            runFrames(*kernel, model, contest[std::string("one thread, ") + pixels.name],
                      [&] { bare.convertFrame(pixels.inside); });
    }
    TwoThreadFloor two(kernel, model, mine);
    for (const Pixels& pixels : PIXELS)
        runFrames(*kernel, model, contest[std::string("two threads, ") + pixels.name],
                  [&] { two.convertFrame(pixels.inside); });
}

bool runWaiting(TimedKernel& kernel, const CameraModel& model, uint8_t* mine, Contest& contest) {
    for (const Pixels& pixels : PIXELS) {
        WaitingClient client(identifierOf(0), model.width, model.height, pixels.format, mine);
        bool all = true;
        runFrames(kernel, model, contest[std::string("waiting, ") + pixels.name],
                  [&] { all = all && client.next(); });
        if (!all)
            return false;
    }
    return true;
}

bool measure(const Layout& layout, const Size& size, int rounds) {
    CameraModel model;
    model.fourcc = layout.fourcc;
    model.width = size.width;
    model.height = size.height;
    const std::shared_ptr<TimedKernel> kernel = plugIn(model);
    // The same for all, as some pages of memory are quicker than others.
    std::vector<uint8_t> mine(static_cast<size_t>(size.width) * static_cast<size_t>(size.height) * 4);
    Contest contest;
    for (int round = 0; round < rounds; ++round) {
        runFloors(kernel, model, mine.data(), contest);
        if (!runWaiting(*kernel, model, mine.data(), contest))
            return false;
        const QuietErrors quiet;
        Client client(identifierOf(0), size.width, size.height);
        if (!client.waitForFrame(1))
            return false;
        for (const Habit& habit : HABITS)
            runHabit(client, *kernel, model, habit, contest[habit.name]);
    }
    contest.write(layout, size);
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
