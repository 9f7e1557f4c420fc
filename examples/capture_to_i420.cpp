// Captures at 1280 x 720, converts each new frame to I420, scales it to 320 x 240 and writes a Y4M video.
//   capture_to_i420 VIDEO.y4m [FRAMES]
// Captures from the first camera, or from a test pattern when none is attached.
#include <ostrel/capture.h>
#include <ostrel/devices.h>
#include <ostrel/processing.h>
#include <ostrel/virtual_camera.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

using namespace ostrel;

// Waits for a frame newer than the one in frame; false when none comes within three seconds.
static bool nextFrame(OVideoCaptureUnix& capture, VideoFrame& frame) {
    const uint32_t last = frame.frameNumber;
    for (int poll = 0; poll < 300; ++poll) {
        capture.selfVideoFrame(frame);
        if (frame.frameNumber != last)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s VIDEO.y4m [FRAMES]\n", argv[0]);
        return 2;
    }
    const int frames = argc > 2 ? std::atoi(argv[2]) : 90;
    std::FILE* video = std::fopen(argv[1], "wb");
    if (!video) {
        std::perror(argv[1]);
        return 1;
    }

    OVideoTestPatternCamera pattern("example-pattern", "Test pattern");
    if (videoDevices().isEmpty())
        pattern.attach();
    int width = 0, height = 0, smallWidth = 0, smallHeight = 0;
    OVideoCommon::qualityToResolution(VIDEO_QUALITY_HD, width, height);
    OVideoCommon::qualityToResolution(VIDEO_QUALITY_LD, smallWidth, smallHeight);

    QSharedPointer<OVideoCaptureUnix> capture = OVideoCaptureUnix::ptr();
    capture->startCapture(videoDevices().keys().first().toLatin1().constData(), width, height);

    // All three buffers live as long as the loop: fresh memory for each frame costs more than the scaling.
    VideoFrame frame;
    std::vector<uint8_t> i420(static_cast<size_t>(width * height * 3 / 2));
    std::vector<uint8_t> small;
    std::fprintf(video, "YUV4MPEG2 W%d H%d F30:1 Ip A1:1 C420jpeg\n", smallWidth, smallHeight);
    int written = 0;
    while (written < frames && nextFrame(*capture, frame)) {
        OVideoConverter::ARGBToI420(frame.data.data(), i420.data(), frame.width, frame.height);
        OVideoScaler::scaleI420Frame(VIDEO_QUALITY_HD, i420, VIDEO_QUALITY_LD, small, SCALE_METHOD_BOX);
        std::fputs("FRAME\n", video);
        std::fwrite(small.data(), 1, small.size(), video);
        ++written;
    }
    if (written < frames)
        std::fprintf(stderr, "no new frame for three seconds; a line of the library above may say why\n");
    const bool stored = std::fclose(video) == 0;
    std::printf("%d frames of %d x %d in %s\n", written, smallWidth, smallHeight, argv[1]);
    return written == frames && stored ? 0 : 1;
}
