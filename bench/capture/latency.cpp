#include "bench/capture/client.h"
#include "bench/capture/floor.h"
#include "bench/capture/json.h"
#include "bench/capture/measure.h"
#include "bench/capture/pictures.h"
#include "bench/capture/suites.h"
#include "bench/capture/timed_kernel.h"

#include <memory>

namespace bench {

namespace {

const char* const PATH = "/dev/video0";

double milliseconds(int64_t nanoseconds) {
    return static_cast<double>(nanoseconds) / 1e6;
}

// Ages of frames at the moment at which the poll returns them, polled at times that drift over the camera's
// interval; beside them the ages that the newest frame had when the poll was called, which no poll can beat.
bool measureAges(const char* name, const CameraModel& model) {
    const std::shared_ptr<TimedKernel> kernel = plugIn(model);
    const QuietErrors quiet;
    Client client(identifierOf(0), model.width, model.height);
    if (!client.waitForFrame(1))
        return false;
    std::vector<double> ages, called, calls;
    const int polls = 300;
    const int64_t interval = model.period() * 61 / 100;
    const int64_t start = monotonicNow();
    for (int i = 1; i <= polls; ++i) {
        sleepUntil(start + i * interval);
        const int64_t before = monotonicNow();
        const ostrel::VideoFrame& frame = client.poll();
        const int64_t after = monotonicNow();
        const uint32_t number = readStamp(frame.data.data(), 4, model.width);
        ages.push_back(milliseconds(after - kernel->arrival(PATH, number)));
        called.push_back(milliseconds((before - kernel->arrival(PATH, 0)) % model.period()));
        calls.push_back(milliseconds(after - before));
    }
    JsonLine("age")
        .add("camera", name)
        .add("milliseconds", ages)
        .add("at_best", called)
        .add("poll", calls)
        .write();
    return true;
}

// Ages of frames at the moment at which the wait for them returns, and the time that the bare conversion
// takes of it, measured on the same camera in turn.
bool measureWaits(const char* name, const CameraModel& model) {
    const std::shared_ptr<TimedKernel> kernel = plugIn(model);
    std::vector<uint8_t> pixels(static_cast<size_t>(model.width) * static_cast<size_t>(model.height) * 4);
    std::vector<double> ages, conversions;
    for (int round = 0; round < 5; ++round) {
        auto client = std::make_unique<WaitingClient>(identifierOf(0), model.width, model.height,
                                                      ostrel::OVIDEO_PIXELS_BGRA, pixels.data());
        for (int i = 0; i < 40; ++i) {
            if (!client->next())
                return false;
            const int64_t after = monotonicNow();
            const uint32_t number = readStamp(pixels.data(), 4, model.width);
            if (i >= 5)
                ages.push_back(milliseconds(after - kernel->arrival(PATH, number)));
        }
        client.reset(); // the camera is for one at a time
        Floor bare(kernel, model, pixels.data());
        for (int i = 0; i < 40; ++i) {
            v4l2_buffer buffer = bare.dequeue();
            const int64_t before = monotonicNow();
            bare.convert(buffer, OutputFormat::Bgra);
            conversions.push_back(milliseconds(monotonicNow() - before));
            bare.requeue(buffer);
        }
    }
    JsonLine("age_waiting")
        .add("camera", name)
        .add("milliseconds", ages)
        .add("conversion", conversions)
        .write();
    return true;
}

// From startCapture to the first frame in hand; without the camera's own share, the time to its first
// picture.
bool measureStarts(const char* name, const CameraModel& model) {
    const std::shared_ptr<TimedKernel> kernel = plugIn(model);
    const QuietErrors quiet;
    const std::string identifier = identifierOf(0);
    std::vector<double> whole, own;
    for (int i = 0; i < 60; ++i) {
        const int64_t before = monotonicNow();
        Client client(identifier, model.width, model.height);
        if (!client.waitForFrame(1))
            return false;
        const int64_t time = monotonicNow() - before;
        whole.push_back(milliseconds(time));
        own.push_back(milliseconds(time - model.period()));
    }
    JsonLine("first_frame")
        .add("camera", name)
        .add("milliseconds", whole)
        .add("without_exposure", own)
        .write();
    return true;
}

} // namespace

bool measureLatency() {
    CameraModel model;
    bool done = measureAges("YUYV 1280x720", model) && measureWaits("YUYV 1280x720", model) &&
                measureStarts("YUYV 1280x720", model);
    model.width = 640;
    model.height = 480;
    done = done && measureAges("YUYV 640x480", model) && measureWaits("YUYV 640x480", model);
    return done;
}

} // namespace bench
