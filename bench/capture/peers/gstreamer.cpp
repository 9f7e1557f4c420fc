// DEVICE is a video node, or "pipewire:" and the name of a camera there.
#include "bench/capture/peers/peer.h"

#include <cstring>
#include <gst/app/gstappsink.h>
#include <gst/gst.h>
#include <stdexcept>

namespace {

const char PIPE_WIRE[] = "pipewire:";

bool isPipeWire(const std::string& device) {
    return device.compare(0, std::strlen(PIPE_WIRE), PIPE_WIRE) == 0;
}

// Session managers connect nothing with a source that names no target.
std::string source(const std::string& device) {
    return isPipeWire(device) ? "pipewiresrc target-object=" + device.substr(std::strlen(PIPE_WIRE))
                              : "v4l2src device=" + device;
}

class GStreamer : public bench::Peer {
public:
    explicit GStreamer(const bench::Request& request) {
        const std::string size =
            ",width=" + std::to_string(request.width) + ",height=" + std::to_string(request.height);
        const std::string raw =
            "video/x-raw,format=" + std::string(request.layout == "YUYV" ? "YUY2" : request.layout);
        const std::string text =
            source(request.device) + " ! " +
            (request.layout == "MJPG" ? "image/jpeg" + size + " ! jpegdec" : raw + size) +
            " ! videoconvert ! video/x-raw,format=BGRA ! "
            "appsink name=sink sync=false max-buffers=1 drop=true";
        GError* error = nullptr;
        pipeline_ = gst_parse_launch(text.c_str(), &error);
        if (error)
            throw std::runtime_error(error->message);
        sink_ = gst_bin_get_by_name(GST_BIN(pipeline_), "sink");
        gst_element_set_state(pipeline_, GST_STATE_PLAYING);
    }
    ~GStreamer() override {
        gst_element_set_state(pipeline_, GST_STATE_NULL);
        gst_object_unref(sink_);
        gst_object_unref(pipeline_);
    }
    unsigned takeFrame() override {
        GstSample* sample = gst_app_sink_try_pull_sample(GST_APP_SINK(sink_), 20 * GST_SECOND);
        if (!sample)
            throw std::runtime_error("no frame");
        GstMapInfo map;
        GstBuffer* buffer = gst_sample_get_buffer(sample);
        gst_buffer_map(buffer, &map, GST_MAP_READ);
        picture_.resize(map.size);
        std::memcpy(picture_.data(), map.data, map.size);
        gst_buffer_unmap(buffer, &map);
        gst_sample_unref(sample);
        return 1;
    }
    const uint8_t* pixels(int& bytesPerPixel) const override {
        bytesPerPixel = 4;
        return picture_.data();
    }

private:
    GstElement* pipeline_ = nullptr;
    GstElement* sink_ = nullptr;
    std::vector<uint8_t> picture_;
};

} // namespace

int main(int argc, char** argv) {
    gst_init(nullptr, nullptr);
    const bool pipeWire = argc > 1 && isPipeWire(argv[1]);
    return bench::runPeer(
        pipeWire ? "GStreamer pipewiresrc" : "GStreamer v4l2src", argc, argv,
        [](const bench::Request& request) -> bench::Peer* { return new GStreamer(request); });
}
