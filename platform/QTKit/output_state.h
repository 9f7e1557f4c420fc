// The settings of an output, as the delivery reads them.
#ifndef OSTREL_PLATFORM_QTKIT_OUTPUT_STATE_H
#define OSTREL_PLATFORM_QTKIT_OUTPUT_STATE_H

#import <QTKit/QTCaptureOutput.h>

#include <atomic>
#include <cstdint>

// Set by the client on any thread, read by the delivery thread.
struct QTCaptureOutputState {
    NSDictionary* attributes = nil; // retained
    std::atomic<id> delegate{nil};  // not retained
    std::atomic<double> minimumInterval{0.0};
};

namespace ostrel {

QTCaptureOutputState& stateOf(QTCaptureDecompressedVideoOutput* output);

// What an output asks for.
struct FrameRequest {
    uint32_t width = 640; // pixels
    uint32_t height = 480;
    uint32_t format = kCVPixelFormatType_32BGRA;
};
FrameRequest requestOf(QTCaptureDecompressedVideoOutput* output);

} // namespace ostrel

#endif
