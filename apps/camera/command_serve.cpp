// ostrel-camera serve
#include "apps/camera/commands.h"
#include "apps/camera/frame_stream.h"
#include "apps/camera/jpeg/jpeg_encoder.h"
#include "apps/camera/serve/audience.h"
#include "apps/camera/serve/http_server.h"
#include "apps/common/failure.h"

namespace ostrel::apps::cli {

namespace {

// A page that is loaded again does not have the camera started again.
const std::chrono::seconds LINGER(2);
// So long nobody notices that the camera has fallen silent, or that a client has gone.
const double LOOK_ROUND = 1; // seconds

// Frames a second, of the last ones.
class RecentRate {
public:
    double of(int64_t captureTime) {
        const double interval = static_cast<double>(captureTime - last_) / 1e9;
        if (last_ != 0 && interval > 0)
            interval_ = interval_ == 0 ? interval : interval_ * 0.9 + interval * 0.1;
        last_ = captureTime;
        return interval_ > 0 ? 1 / interval_ : 0;
    }

private:
    int64_t last_ = 0; // nanoseconds
    double interval_ = 0;
};

class Service {
public:
    Service(const Options& options, const Context& context, const Camera& camera)
        : options_(options), context_(context), camera_(camera),
          server_(audience_, options.serve.port, camera.name, options.size()),
          encoder_(options.size(), options.serve.quality.value_or(DEFAULT_JPEG_QUALITY)) {}

    int run() {
        const std::string port = std::to_string(server_.port());
        context_.messages.say("serving " + camera_.name + " at http://127.0.0.1:" + port +
                              "/, Ctrl-C ends it");
        context_.messages.say("every user of this machine can look; from another one: ssh -L " + port +
                              ":localhost:" + port + " and the name of this one");
        while (waitForAnybody()) {
            try {
                show();
            } catch (const Failure& failure) {
                audience_.fail(failure.what());
                context_.messages.say(failure.what());
            }
        }
        return EXIT_OK;
    }

private:
    // False when a signal ended the waiting.
    bool waitForAnybody() {
        while (!context_.stop.raised()) {
            audience_.settle();
            if (audience_.size() > 0)
                return true;
            context_.stop.wait(audience_.descriptor(), Clock::time_point::max());
        }
        return false;
    }

    // Captures for as long as anybody looks.
    void show() {
        FrameStream stream(camera_, options_.size(), FrameStream::Wanted::OwnJpeg, context_.stop);
        RecentRate rate;
        Clock::time_point looked = Clock::now();
        Clock::time_point seen = looked;
        while (Clock::now() - looked < LINGER) {
            if (audience_.size() > 0)
                looked = Clock::now();
            switch (stream.next(frame_, LOOK_ROUND)) {
            case FrameStream::Result::Frame:
                publish(rate);
                seen = Clock::now();
                break;
            case FrameStream::Result::TimedOut:
                audience_.repeat();
                if (std::chrono::duration<double>(Clock::now() - seen).count() >= options_.camera.timeout)
                    throw Failure(EXIT_NO_FRAME, stream.timeoutReason(options_.camera.timeout));
                break;
            case FrameStream::Result::Ended:
                throw Failure(EXIT_CANNOT_OPEN, stream.endReason());
            case FrameStream::Result::Stopped:
                return;
            }
        }
        audience_.clear();
    }

    void publish(RecentRate& rate) {
        std::string jpeg;
        if (frame_.isJpeg) {
            jpeg = frame_.jpeg.jpeg().toStdString();
            if (jpeg.empty()) // broken
                return;
        } else {
            const JpegEncoder::Jpeg encoded = encoder_.encode(frame_.pixels.data.data());
            jpeg.assign(reinterpret_cast<const char*>(encoded.data), encoded.bytes);
        }
        const int64_t time = frame_.facts.captureTime();
        audience_.publish(std::move(jpeg), time, rate.of(time));
    }

    const Options& options_;
    const Context& context_;
    Camera camera_;
    Audience audience_;
    HttpServer server_;
    JpegEncoder encoder_;
    CapturedFrame frame_;
};

} // namespace

int runServe(const Options& options, const Context& context) {
    const AddedCameras added = addCameras(options.camera, options.size());
    const Camera camera = chooseCamera(options.camera, added);
    if (options.mode)
        requestMode(camera.identifier, *options.mode);
    return Service(options, context, camera).run();
}

} // namespace ostrel::apps::cli
