// OpenCV gives its users three bytes a pixel, and that is what is measured: a quarter less to write than the
// others have.
#include "bench/capture/peers/peer.h"

#include <opencv2/videoio.hpp>
#include <stdexcept>

namespace {

class OpenCv : public bench::Peer {
public:
    explicit OpenCv(const bench::Request& request) {
        cv::setNumThreads(1);
        const std::string& l = request.layout;
        const int fourcc = l == "YUYV" ? cv::VideoWriter::fourcc('Y', 'U', 'Y', 'V')
                                       : cv::VideoWriter::fourcc(l[0], l[1], l[2], l[3]);
        if (!capture_.open(request.device, cv::CAP_V4L2))
            throw std::runtime_error("not opened");
        capture_.set(cv::CAP_PROP_FOURCC, fourcc);
        capture_.set(cv::CAP_PROP_FRAME_WIDTH, request.width);
        capture_.set(cv::CAP_PROP_FRAME_HEIGHT, request.height);
        capture_.set(cv::CAP_PROP_FPS, request.rate);
        takeFrame();
        if (picture_.cols != request.width || picture_.rows != request.height)
            throw std::runtime_error("another size");
    }
    unsigned takeFrame() override {
        if (!capture_.read(picture_))
            throw std::runtime_error("no frame");
        return 1;
    }
    uint8_t sample() const override { return picture_.data[picture_.total() * 3 / 2]; }

private:
    cv::VideoCapture capture_;
    cv::Mat picture_;
};

} // namespace

int main(int argc, char** argv) {
    return bench::runPeer("OpenCV VideoCapture", argc, argv,
                          [](const bench::Request& request) -> bench::Peer* { return new OpenCv(request); });
}
