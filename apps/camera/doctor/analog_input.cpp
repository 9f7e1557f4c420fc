#include "apps/camera/doctor/analog_input.h"

#include <cstring>
#include <linux/videodev2.h>
#include <sys/ioctl.h>

namespace ostrel::apps::cli::doctor {

namespace {

template <std::size_t Size>
std::string text(const __u8 (&bytes)[Size]) {
    const char* const start = reinterpret_cast<const char*>(bytes);
    return std::string(start, strnlen(start, Size));
}

// The name of the standard that stands: the one that is exactly it, else the first that it is a part of.
std::string standardOf(int descriptor) {
    v4l2_std_id current = 0;
    if (ioctl(descriptor, VIDIOC_G_STD, &current) != 0 || current == 0)
        return std::string();
    std::string name;
    v4l2_standard standard = {};
    for (; ioctl(descriptor, VIDIOC_ENUMSTD, &standard) == 0; ++standard.index) {
        if (standard.id == current)
            return text(standard.name);
        if (name.empty() && (standard.id & current) == current)
            name = text(standard.name);
    }
    return name;
}

} // namespace

AnalogInput analogInputOf(int descriptor) {
    AnalogInput result;
    int current = 0;
    if (ioctl(descriptor, VIDIOC_G_INPUT, &current) != 0)
        return result;
    v4l2_input input = {};
    bool hasStandards = false;
    for (; ioctl(descriptor, VIDIOC_ENUMINPUT, &input) == 0; ++input.index) {
        ++result.count;
        if (input.index != static_cast<__u32>(current))
            continue;
        result.number = current;
        result.name = text(input.name);
        result.noSignal = (input.status & (V4L2_IN_ST_NO_SIGNAL | V4L2_IN_ST_NO_POWER)) != 0;
        hasStandards = input.std != 0;
    }
    result.known = result.count > 1 || hasStandards;
    if (hasStandards)
        result.standard = standardOf(descriptor);
    return result;
}

} // namespace ostrel::apps::cli::doctor
