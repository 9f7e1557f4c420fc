// pipewire_camera NAME [WORD=VALUE...] - a camera without hardware: a node that offers pictures.
//   format=YUYV,GREY   of the formats below, each in all sizes; of MJPG and H264 the contents of jpeg=FILE
//   are every
//                      picture
//   sizes=640x480,1280x720   rates=30,15 (all at each size)
//   planes=separate one block of memory for each plane
//   padding=BYTES   at the end of each row
//   path=/dev/...   the kernel's node that this camera is said to be
//   role=Screen     instead of Camera
//   device.vendor.id=0x046d   and whatever else has a point in it: a property of the node
//   lie=offset|size|stride|negative|short|empty|corrupted   what is wrong in the description of each picture
// Every byte of a raw picture is the low byte of the frame's number. It says on its standard output what
// becomes of it ("streaming", "granted 640x480"), and hears on its standard input:
//   size WxH        offer this one from now on
//   hold            send no frames          go    send them again
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iterator>
#include <map>
#include <pipewire/pipewire.h>
#include <spa/param/video/format-utils.h>
#include <spa/pod/builder.h>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

struct PixelFormat {
    const char* fourcc;
    uint32_t raw; // 0: compressed
    // Of each plane: bytes of a row for 2 pixels, and rows for 2 rows.
    std::vector<std::pair<uint32_t, uint32_t>> planes;
};

const PixelFormat FORMATS[] = {
    {"YUYV", SPA_VIDEO_FORMAT_YUY2, {{4, 2}}},
    {"UYVY", SPA_VIDEO_FORMAT_UYVY, {{4, 2}}},
    {"NV12", SPA_VIDEO_FORMAT_NV12, {{2, 2}, {2, 1}}},
    {"YU12", SPA_VIDEO_FORMAT_I420, {{2, 2}, {1, 1}, {1, 1}}},
    {"BGRx", SPA_VIDEO_FORMAT_BGRx, {{8, 2}}},
    {"RGBx", SPA_VIDEO_FORMAT_RGBx, {{8, 2}}},
    {"RGB3", SPA_VIDEO_FORMAT_RGB, {{6, 2}}},
    {"BGR3", SPA_VIDEO_FORMAT_BGR, {{6, 2}}},
    {"GREY", SPA_VIDEO_FORMAT_GRAY8, {{2, 2}}},
    {"v210", SPA_VIDEO_FORMAT_v210, {{16, 2}}}, // that nobody here can read
    {"MJPG", 0, {{0, 0}}},
    {"H264", 0, {{0, 0}}},
};

struct Camera {
    pw_main_loop* loop = nullptr;
    pw_context* context = nullptr;
    pw_core* core = nullptr;
    pw_stream* stream = nullptr;
    spa_source* timer = nullptr;
    spa_hook streamListener = {}, coreListener = {};
    std::vector<const PixelFormat*> formats = {&FORMATS[0]};
    const PixelFormat* format = &FORMATS[0]; // that was granted
    std::vector<spa_rectangle> sizes = {{640, 480}, {1280, 720}};
    std::vector<uint32_t> rates = {30};
    std::string jpeg, lie;
    bool separate = false, holds = false;
    uint32_t padding = 0;
    spa_rectangle granted = {0, 0};
    uint32_t rate = 30;
    uint32_t frame = 0;
};

uint32_t rowBytes(const Camera& camera, size_t plane) {
    return camera.granted.width * camera.format->planes[plane].first / 2 + camera.padding;
}

uint32_t planeBytes(const Camera& camera, size_t plane) {
    if (!camera.format->raw)
        return static_cast<uint32_t>(camera.jpeg.size());
    return rowBytes(camera, plane) * (camera.granted.height * camera.format->planes[plane].second / 2);
}

uint32_t pictureBytes(const Camera& camera) {
    uint32_t bytes = 0;
    for (size_t plane = 0; plane < camera.format->planes.size(); ++plane)
        bytes += planeBytes(camera, plane);
    return bytes;
}

uint32_t subtypeOf(const PixelFormat& format) {
    if (format.raw)
        return SPA_MEDIA_SUBTYPE_raw;
    return std::strcmp(format.fourcc, "MJPG") == 0 ? SPA_MEDIA_SUBTYPE_mjpg : SPA_MEDIA_SUBTYPE_h264;
}

const spa_pod* describe(const Camera& camera, spa_pod_builder* builder, const PixelFormat& format,
                        const spa_rectangle& size) {
    spa_pod_frame frame;
    spa_pod_builder_push_object(builder, &frame, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
    spa_pod_builder_add(builder, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video),
                        SPA_FORMAT_mediaSubtype, SPA_POD_Id(subtypeOf(format)), 0);
    if (format.raw)
        spa_pod_builder_add(builder, SPA_FORMAT_VIDEO_format, SPA_POD_Id(format.raw), 0);
    spa_pod_builder_add(builder, SPA_FORMAT_VIDEO_size, SPA_POD_Rectangle(&size), 0);
    spa_pod_builder_prop(builder, SPA_FORMAT_VIDEO_framerate, 0);
    spa_pod_frame choice;
    spa_pod_builder_push_choice(builder, &choice, SPA_CHOICE_Enum, 0);
    spa_pod_builder_fraction(builder, camera.rates[0], 1); // the default, told once more
    for (const uint32_t rate : camera.rates)
        spa_pod_builder_fraction(builder, rate, 1);
    spa_pod_builder_pop(builder, &choice);
    return static_cast<const spa_pod*>(spa_pod_builder_pop(builder, &frame));
}

void onParamChanged(void* data, uint32_t id, const spa_pod* param) {
    auto& camera = *static_cast<Camera*>(data);
    if (!param || id != SPA_PARAM_Format)
        return;
    spa_fraction rate = {0, 1};
    uint32_t type = 0, subtype = 0, raw = 0;
    spa_format_parse(param, &type, &subtype);
    spa_pod_parse_object(param, SPA_TYPE_OBJECT_Format, nullptr, SPA_FORMAT_VIDEO_format,
                         SPA_POD_OPT_Id(&raw), SPA_FORMAT_VIDEO_size, SPA_POD_Rectangle(&camera.granted),
                         SPA_FORMAT_VIDEO_framerate, SPA_POD_OPT_Fraction(&rate));
    for (const PixelFormat* format : camera.formats)
        if (subtypeOf(*format) == subtype && format->raw == raw)
            camera.format = format;
    camera.rate = rate.denom && rate.num ? rate.num / rate.denom : 30;
    std::printf("granted %ux%u at %u\n", camera.granted.width, camera.granted.height, camera.rate);
    const int blocks = camera.separate ? static_cast<int>(camera.format->planes.size()) : 1;
    const uint32_t bytes = camera.separate ? planeBytes(camera, 0) : pictureBytes(camera);
    uint8_t memory[1024];
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(memory, sizeof memory);
    const spa_pod* params[2];
    params[0] = static_cast<const spa_pod*>(spa_pod_builder_add_object(
        &builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_buffers,
        SPA_POD_CHOICE_RANGE_Int(4, 2, 16), SPA_PARAM_BUFFERS_blocks, SPA_POD_Int(blocks),
        SPA_PARAM_BUFFERS_size, SPA_POD_Int(static_cast<int>(bytes)), SPA_PARAM_BUFFERS_stride,
        SPA_POD_Int(static_cast<int>(rowBytes(camera, 0)))));
    params[1] = static_cast<const spa_pod*>(spa_pod_builder_add_object(
        &builder, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta, SPA_PARAM_META_type, SPA_POD_Id(SPA_META_Header),
        SPA_PARAM_META_size, SPA_POD_Int(sizeof(spa_meta_header))));
    pw_stream_update_params(camera.stream, params, 2);
}

void setTimer(Camera& camera, bool on) {
    timespec first = {0, 0};
    timespec interval = {0, 0};
    if (on) {
        first.tv_nsec = 1;
        interval.tv_sec = camera.rate == 1 ? 1 : 0;
        interval.tv_nsec = camera.rate == 1 ? 0 : 1000000000L / static_cast<long>(camera.rate);
    }
    pw_loop_update_timer(pw_main_loop_get_loop(camera.loop), camera.timer, &first, &interval, false);
}

void onStateChanged(void* data, pw_stream_state, pw_stream_state state, const char* error) {
    auto& camera = *static_cast<Camera*>(data);
    std::printf("%s%s%s\n", pw_stream_state_as_string(state), error ? ": " : "", error ? error : "");
    if (state == PW_STREAM_STATE_UNCONNECTED)
        pw_main_loop_quit(camera.loop);
    else
        setTimer(camera, state == PW_STREAM_STATE_STREAMING);
}

void onTimer(void* data, uint64_t) {
    auto& camera = *static_cast<Camera*>(data);
    if (!camera.holds)
        pw_stream_trigger_process(camera.stream);
}

void lieAbout(const Camera& camera, spa_data& block, spa_meta_header* header) {
    if (camera.lie == "offset")
        block.chunk->offset = block.maxsize + 0x10000000;
    else if (camera.lie == "size")
        block.chunk->size = 0xFFFFFFF0;
    else if (camera.lie == "stride")
        block.chunk->stride = 0x7FFFFFF0;
    else if (camera.lie == "negative")
        block.chunk->stride = -640;
    else if (camera.lie == "short")
        block.chunk->size /= 2;
    else if (camera.lie == "empty")
        block.chunk->size = 0;
    else if (camera.lie == "corrupted" && header)
        header->flags = SPA_META_HEADER_FLAG_CORRUPTED;
}

void onProcess(void* data) {
    auto& camera = *static_cast<Camera*>(data);
    pw_buffer* const queued = pw_stream_dequeue_buffer(camera.stream);
    const uint32_t number = camera.frame++; // a frame without a buffer is lost, as in a driver
    if (!queued)
        return;
    auto* const header = static_cast<spa_meta_header*>(
        spa_buffer_find_meta_data(queued->buffer, SPA_META_Header, sizeof(spa_meta_header)));
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    if (header) {
        header->flags = 0;
        header->seq = number;
        header->pts = now.tv_sec * 1000000000LL + now.tv_nsec;
    }
    for (uint32_t i = 0; i < queued->buffer->n_datas; ++i) {
        spa_data& block = queued->buffer->datas[i];
        const uint32_t whole = camera.separate ? planeBytes(camera, i) : pictureBytes(camera);
        const uint32_t bytes = whole < block.maxsize ? whole : block.maxsize;
        if (camera.format->raw)
            std::memset(block.data, static_cast<int>(number & 0xFF), bytes);
        else
            std::memcpy(block.data, camera.jpeg.data(), bytes);
        block.chunk->offset = 0;
        block.chunk->size = bytes;
        block.chunk->stride = camera.format->raw ? static_cast<int32_t>(rowBytes(camera, i)) : 0;
        lieAbout(camera, block, header);
    }
    pw_stream_queue_buffer(camera.stream, queued);
}

void offer(Camera& camera, bool connect) {
    uint8_t memory[16384];
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(memory, sizeof memory);
    std::vector<const spa_pod*> offers;
    for (const PixelFormat* format : camera.formats)
        for (const spa_rectangle& size : camera.sizes)
            offers.push_back(describe(camera, &builder, *format, size));
    const auto count = static_cast<uint32_t>(offers.size());
    if (connect)
        pw_stream_connect(camera.stream, PW_DIRECTION_OUTPUT, PW_ID_ANY,
                          static_cast<pw_stream_flags>(PW_STREAM_FLAG_DRIVER | PW_STREAM_FLAG_MAP_BUFFERS),
                          offers.data(), count);
    else
        pw_stream_update_params(camera.stream, offers.data(), count);
}

bool readSize(const std::string& text, spa_rectangle& size) {
    return std::sscanf(text.c_str(), "%ux%u", &size.width, &size.height) == 2;
}

void onInput(void* data, int descriptor, uint32_t) {
    auto& camera = *static_cast<Camera*>(data);
    char buffer[256];
    const ssize_t bytes = read(descriptor, buffer, sizeof buffer - 1);
    if (bytes <= 0) {
        pw_main_loop_quit(camera.loop);
        return;
    }
    std::istringstream lines(std::string(buffer, static_cast<size_t>(bytes)));
    for (std::string line; std::getline(lines, line);) {
        spa_rectangle size = {0, 0};
        if (line == "hold" || line == "go")
            camera.holds = line == "hold";
        else if (line.compare(0, 5, "size ") == 0 && readSize(line.substr(5), size)) {
            camera.sizes = {size};
            offer(camera, false);
        }
    }
}

std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, ',');)
        parts.push_back(part);
    return parts;
}

bool readWords(int count, char** words, Camera& camera, std::map<std::string, std::string>& values) {
    for (int i = 2; i < count; ++i) {
        const std::string word = words[i];
        const size_t sign = word.find('=');
        values[word.substr(0, sign)] = sign == std::string::npos ? "" : word.substr(sign + 1);
    }
    if (values.count("format")) {
        camera.formats.clear();
        for (const std::string& name : split(values["format"]))
            for (const PixelFormat& format : FORMATS)
                if (name == format.fourcc)
                    camera.formats.push_back(&format);
    }
    if (values.count("sizes")) {
        camera.sizes.clear();
        for (const std::string& text : split(values["sizes"])) {
            spa_rectangle size = {0, 0};
            if (readSize(text, size))
                camera.sizes.push_back(size);
        }
    }
    if (values.count("rates")) {
        camera.rates.clear();
        for (const std::string& text : split(values["rates"]))
            camera.rates.push_back(static_cast<uint32_t>(std::atoi(text.c_str())));
    }
    if (values.count("jpeg")) {
        std::ifstream file(values["jpeg"], std::ios::binary);
        camera.jpeg.assign(std::istreambuf_iterator<char>(file), {});
    }
    camera.separate = values["planes"] == "separate";
    camera.padding = static_cast<uint32_t>(std::atoi(values["padding"].c_str()));
    camera.lie = values["lie"];
    return !camera.formats.empty() && !camera.sizes.empty() && !camera.rates.empty() && camera.rates[0] != 0;
}

} // namespace

int main(int argc, char** argv) {
    Camera camera;
    std::map<std::string, std::string> values;
    if (argc < 2 || !readWords(argc, argv, camera, values)) {
        std::fprintf(stderr, "usage: pipewire_camera NAME [WORD=VALUE...]\n");
        return 2;
    }
    setvbuf(stdout, nullptr, _IOLBF, 0);
    pw_init(nullptr, nullptr);
    camera.loop = pw_main_loop_new(nullptr);
    pw_loop* const loop = pw_main_loop_get_loop(camera.loop);
    camera.timer = pw_loop_add_timer(loop, onTimer, &camera);
    pw_loop_add_io(loop, STDIN_FILENO, SPA_IO_IN, false, onInput, &camera);
    camera.context = pw_context_new(loop, pw_properties_new("module.rt", "false", nullptr), 0);
    camera.core = pw_context_connect(camera.context, nullptr, 0);
    if (!camera.core) {
        std::fprintf(stderr, "pipewire_camera: no PipeWire daemon: %s\n", std::strerror(errno));
        return 1;
    }
    static const pw_core_events onCore = [] {
        pw_core_events events = {};
        events.version = PW_VERSION_CORE_EVENTS;
        events.error = [](void* data, uint32_t, int, int, const char*) {
            pw_main_loop_quit(static_cast<Camera*>(data)->loop);
        };
        return events;
    }();
    pw_core_add_listener(camera.core, &camera.coreListener, &onCore, &camera);
    pw_properties* const properties =
        pw_properties_new(PW_KEY_MEDIA_CLASS, "Video/Source", PW_KEY_MEDIA_ROLE,
                          values.count("role") ? values["role"].c_str() : "Camera", PW_KEY_NODE_NAME, argv[1],
                          PW_KEY_NODE_DESCRIPTION,
                          values.count("description") ? values["description"].c_str() : argv[1], nullptr);
    for (const auto& value : values)
        if (value.first.find('.') != std::string::npos)
            pw_properties_set(properties, value.first.c_str(), value.second.c_str());
    if (values.count("path"))
        pw_properties_set(properties, "api.v4l2.path", values["path"].c_str());
    camera.stream = pw_stream_new(camera.core, argv[1], properties);
    static const pw_stream_events onStream = [] {
        pw_stream_events events = {};
        events.version = PW_VERSION_STREAM_EVENTS;
        events.state_changed = onStateChanged;
        events.param_changed = onParamChanged;
        events.process = onProcess;
        return events;
    }();
    pw_stream_add_listener(camera.stream, &camera.streamListener, &onStream, &camera);
    offer(camera, true);
    pw_main_loop_run(camera.loop);
    pw_stream_destroy(camera.stream);
    pw_context_destroy(camera.context);
    pw_main_loop_destroy(camera.loop);
    return 0;
}
