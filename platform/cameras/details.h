// What is known of the device behind a camera.
#ifndef OSTREL_PLATFORM_CAMERAS_DETAILS_H
#define OSTREL_PLATFORM_CAMERAS_DETAILS_H

#include <string>

namespace ostrel {
namespace cameras {

// What is not known is empty or 0. Texts are UTF-8.
struct CameraDetails {
    std::string kind; // by what it is captured from: "V4L2"
    std::string node; // "/dev/video0"
    std::string driver;
    std::string bus; // where it is plugged in
    int vendor = 0;  // of USB and PCI devices
    int product = 0;
    std::string serialNumber;
};

} // namespace cameras
} // namespace ostrel

#endif
