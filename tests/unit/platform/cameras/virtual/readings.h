// The test pattern's stamps in frames of a listed camera.
#ifndef OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_VIRTUAL_READINGS_H
#define OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_VIRTUAL_READINGS_H

#include "pictures.h"

#include "platform/cameras/registry.h"
#include "support/recording_sink.h"

#include <memory>
#include <string>
#include <thread>

namespace ostrel::tests {

using support::RecordingSink;

// The camera with the identifier as the listing has it, or null.
inline std::shared_ptr<cameras::Camera> listed(const std::string& identifier) {
    for (const auto& camera : cameras::attachedCameras())
        if (camera->identifier() == identifier)
            return camera;
    return nullptr;
}

struct Reading {
    bool converted = false;
    bool decoded = false;
    uint32_t counter = 0;
    uint32_t clock = 0;
};

// Takes the frame and reads the test pattern's stamp.
inline Reading read(const RecordingSink::FramePointer& frame, int width = 160, int height = 120) {
    Reading reading;
    Bgra picture(width, height);
    reading.converted = frame && frame->convert(picture.bytes.data(), width, height, picture.stride);
    reading.decoded = reading.converted && decode(picture, reading.counter, reading.clock);
    return reading;
}

} // namespace ostrel::tests

#endif
