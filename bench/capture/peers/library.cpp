// This library, in one of three programs: polled once for each of the camera's intervals, between two frames,
// or waiting for frames in memory of its own with BENCH_WAIT as the format. DEVICE "timed" makes a timed
// camera the machine's only one; any other stands for the first camera that is listed.
#include "bench/capture/client.h"
#include "bench/capture/measure.h"
#include "bench/capture/peers/peer.h"
#include "bench/capture/timed_kernel.h"

#include <memory>
#include <stdexcept>

namespace {

class Library : public bench::Peer {
public:
    explicit Library(const bench::Request& request) {
        if (request.device != "timed")
            return;
        bench::CameraModel model;
        model.fourcc =
            v4l2_fourcc(request.layout[0], request.layout[1], request.layout[2], request.layout[3]);
        model.width = request.width;
        model.height = request.height;
        model.rate = static_cast<unsigned>(request.rate);
        kernel_ = bench::plugIn(model);
    }
    int64_t arrival(uint32_t number) const override {
        return kernel_ ? kernel_->arrival("/dev/video0", number) : 0;
    }

private:
    std::shared_ptr<bench::TimedKernel> kernel_;
};

#ifdef BENCH_WAIT

class Waiting : public Library {
public:
    explicit Waiting(const bench::Request& request)
        : Library(request), pixels_(static_cast<size_t>(request.width) *
                                    static_cast<size_t>(request.height * bench::bytesOf(BENCH_WAIT))),
          client_(bench::identifierOf(0), request.width, request.height, BENCH_WAIT, pixels_.data()) {}
    unsigned takeFrame() override {
        if (!client_.next())
            throw std::runtime_error("no frame");
        return static_cast<unsigned>(client_.facts().passedOver() + 1);
    }
    const uint8_t* pixels(int& bytesPerPixel) const override {
        bytesPerPixel = bench::bytesOf(BENCH_WAIT);
        return pixels_.data();
    }

private:
    std::vector<uint8_t> pixels_;
    bench::WaitingClient client_;
};

const char* const NAME =
    BENCH_WAIT == ostrel::OVIDEO_PIXELS_BGR ? "library, waiting, 24 bits" : "library, waiting";
using Chosen = Waiting;

#else

class Polled : public Library {
public:
    explicit Polled(const bench::Request& request)
        : Library(request), interval_(1000000000 / request.rate),
          client_(bench::identifierOf(0), request.width, request.height) {
        // The first frames of a camera may be further apart than the others, and the polls are to be between
        // two.
        if (!client_.waitForFrame(5))
            throw std::runtime_error("no frame");
        frame_ = &client_.poll();
        last_ = frame_->frameNumber;
        next_ = bench::monotonicNow() + interval_ / 2;
    }
    unsigned takeFrame() override {
        bench::sleepUntil(next_);
        next_ += interval_;
        frame_ = &client_.poll();
        const unsigned passed = frame_->frameNumber - last_;
        last_ = frame_->frameNumber;
        return passed;
    }
    const uint8_t* pixels(int& bytesPerPixel) const override {
        bytesPerPixel = 4;
        return frame_->data.data();
    }

private:
    const int64_t interval_; // nanoseconds
    bench::Client client_;
    const ostrel::VideoFrame* frame_ = nullptr;
    uint32_t last_ = 0;
    int64_t next_ = 0;
};

const char* const NAME = "library, polled";
using Chosen = Polled;

#endif

} // namespace

int main(int argc, char** argv) {
    return bench::runPeer(NAME, argc, argv,
                          [](const bench::Request& request) -> bench::Peer* { return new Chosen(request); });
}
