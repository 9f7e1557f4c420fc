// OpenCV gives its users three bytes a pixel, a quarter less to write than the others have. With BENCH_BGRA
// the frame is then turned into what the others give, as a user does who needs that.
#include "bench/capture/peers/peer.h"

#include <opencv2/imgproc.hpp>
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
#ifdef BENCH_BGRA
        cv::cvtColor(picture_, bgra_, cv::COLOR_BGR2BGRA);
#endif
        return 1;
    }
    const uint8_t* pixels(int& bytesPerPixel) const override {
#ifdef BENCH_BGRA
        const cv::Mat& last = bgra_;
#else
        const cv::Mat& last = picture_;
#endif
        bytesPerPixel = static_cast<int>(last.elemSize());
        return last.data;
    }

private:
    cv::VideoCapture capture_;
    cv::Mat picture_;
    cv::Mat bgra_;
};

#ifdef BENCH_BGRA
const char* const NAME = "OpenCV, as 32 bits";
#else
const char* const NAME = "OpenCV VideoCapture";
#endif

} // namespace

int main(int argc, char** argv) {
    return bench::runPeer(NAME, argc, argv,
                          [](const bench::Request& request) -> bench::Peer* { return new OpenCv(request); });
}
