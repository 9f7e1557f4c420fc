// This library. DEVICE "timed" makes a timed camera the machine's only one; any other stands for the first
// camera that is listed. The interface is polled: once for each of the camera's intervals, between two
// frames.
#include "bench/capture/client.h"
#include "bench/capture/measure.h"
#include "bench/capture/peers/peer.h"
#include "bench/capture/timed_kernel.h"

#include <memory>
#include <stdexcept>

namespace {

class Library : public bench::Peer {
public:
    explicit Library(const bench::Request& request) : interval_(1000000000 / request.rate) {
        if (request.device == "timed") {
            bench::CameraModel model;
            model.fourcc =
                v4l2_fourcc(request.layout[0], request.layout[1], request.layout[2], request.layout[3]);
            model.width = request.width;
            model.height = request.height;
            model.rate = static_cast<unsigned>(request.rate);
            bench::plugIn(model);
        }
        client_ = std::make_unique<bench::Client>(bench::identifierOf(0), request.width, request.height);
        if (!client_->waitForFirstFrame())
            throw std::runtime_error("no frame");
        last_ = client_->poll().frameNumber;
        next_ = bench::monotonicNow() + interval_ / 2;
    }
    unsigned takeFrame() override {
        bench::sleepUntil(next_);
        next_ += interval_;
        frame_ = &client_->poll();
        const unsigned passed = frame_->frameNumber - last_;
        last_ = frame_->frameNumber;
        return passed;
    }
    uint8_t sample() const override { return frame_->data[frame_->data.size() / 2]; }

private:
    const int64_t interval_; // nanoseconds
    std::unique_ptr<bench::Client> client_;
    const ostrel::VideoFrame* frame_ = nullptr;
    uint32_t last_ = 0;
    int64_t next_ = 0;
};

} // namespace

int main(int argc, char** argv) {
    return bench::runPeer("library", argc, argv,
                          [](const bench::Request& request) -> bench::Peer* { return new Library(request); });
}
