// What PipeWire says of a camera.
#ifndef OSTREL_PLATFORM_CAMERAS_PIPEWIRE_CAMERA_NODE_H
#define OSTREL_PLATFORM_CAMERAS_PIPEWIRE_CAMERA_NODE_H

#include "platform/cameras/details.h"

#include <cstdint>
#include <spa/utils/dict.h>
#include <string>

namespace ostrel {
namespace cameras {
namespace pipewire {

// Texts are bytes as PipeWire gives them; what nobody said is empty.
struct CameraNode {
    uint32_t id = 0;    // of this moment only
    std::string serial; // never used again while the daemon runs: what to connect to
    std::string name;   // "v4l2_input.pci-...": made from the place where the camera is plugged in, it stays
    std::string description;   // for people
    std::string v4l2Path;      // "/dev/video0": the very node that the kernel has
    std::string deviceNumbers; // of all its V4L2 nodes (st_rdev), from 0.3.80 on
    CameraDetails details;     // of the device
    bool inUse = false;        // PipeWire has it open at present
};

// Empty where nothing is said.
std::string text(const spa_dict* properties, const char* key);

// What the properties of a node or of a device tell of the hardware.
CameraDetails readDetails(const spa_dict* properties);
// Adds what is not known yet.
void complete(CameraDetails& details, const CameraDetails& more);

} // namespace pipewire
} // namespace cameras
} // namespace ostrel

#endif
