#include "bench/capture/peers/peer.h"

#include <stdexcept>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavdevice/avdevice.h>
#include <libavformat/avformat.h>
#include <libavutil/imgutils.h>
#include <libswscale/swscale.h>
}

namespace {

class Ffmpeg : public bench::Peer {
public:
    explicit Ffmpeg(const bench::Request& request) : width_(request.width), height_(request.height) {
        avdevice_register_all();
        AVDictionary* options = nullptr;
        const std::string size = std::to_string(width_) + "x" + std::to_string(height_);
        av_dict_set(&options, "video_size", size.c_str(), 0);
        av_dict_set(&options, "framerate", std::to_string(request.rate).c_str(), 0);
        const char* layout = request.layout == "YUYV"   ? "yuyv422"
                             : request.layout == "NV12" ? "nv12"
                                                        : "mjpeg";
        av_dict_set(&options, "input_format", layout, 0);
        check(avformat_open_input(&input_, request.device.c_str(), av_find_input_format("v4l2"), &options));
        av_dict_free(&options);
        const AVCodecParameters* parameters = input_->streams[0]->codecpar;
        const AVCodec* codec = avcodec_find_decoder(parameters->codec_id);
        decoder_ = avcodec_alloc_context3(codec);
        check(avcodec_parameters_to_context(decoder_, parameters));
        decoder_->thread_count = 1;
        check(avcodec_open2(decoder_, codec, nullptr));
        picture_.resize(static_cast<size_t>(width_) * static_cast<size_t>(height_) * 4);
    }
    ~Ffmpeg() override {
        sws_freeContext(scaler_);
        av_frame_free(&frame_);
        av_packet_free(&packet_);
        avcodec_free_context(&decoder_);
        avformat_close_input(&input_);
    }
    unsigned takeFrame() override {
        int read = 0;
        do
            read = av_read_frame(input_, packet_);
        while (read == AVERROR(EAGAIN));
        check(read);
        check(avcodec_send_packet(decoder_, packet_));
        av_packet_unref(packet_);
        check(avcodec_receive_frame(decoder_, frame_));
        convert();
        av_frame_unref(frame_);
        return 1;
    }
    const uint8_t* pixels(int& bytesPerPixel) const override {
        bytesPerPixel = 4;
        return picture_.data();
    }

private:
    static void check(int result) {
        if (result >= 0)
            return;
        char text[AV_ERROR_MAX_STRING_SIZE] = {};
        av_strerror(result, text, sizeof text);
        throw std::runtime_error(text);
    }
    void convert() {
        const auto format = static_cast<AVPixelFormat>(frame_->format);
        scaler_ = sws_getCachedContext(scaler_, frame_->width, frame_->height, format, width_, height_,
                                       AV_PIX_FMT_BGRA, SWS_FAST_BILINEAR, nullptr, nullptr, nullptr);
        uint8_t* rows[4] = {picture_.data()};
        const int strides[4] = {width_ * 4};
        sws_scale(scaler_, frame_->data, frame_->linesize, 0, frame_->height, rows, strides);
    }

    const int width_, height_;
    AVFormatContext* input_ = nullptr;
    AVCodecContext* decoder_ = nullptr;
    AVPacket* packet_ = av_packet_alloc();
    AVFrame* frame_ = av_frame_alloc();
    SwsContext* scaler_ = nullptr;
    std::vector<uint8_t> picture_;
};

} // namespace

int main(int argc, char** argv) {
    av_log_set_level(AV_LOG_ERROR);
    return bench::runPeer("ffmpeg v4l2", argc, argv,
                          [](const bench::Request& request) -> bench::Peer* { return new Ffmpeg(request); });
}
