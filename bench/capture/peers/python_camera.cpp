// The C library with a timed camera, which Python loads in the place of the real one: TIMED_CAMERA says
// which, as for preload.cpp; without it the machine's cameras are there.
#include "bench/capture/timed_kernel.h"

#include <cstdio>
#include <cstdlib>

namespace {

__attribute__((constructor)) void plugIn() {
    char layout[5] = {};
    bench::CameraModel model;
    const char* const text = std::getenv("TIMED_CAMERA");
    if (!text || std::sscanf(text, "%*s %4s %d %d %u", layout, &model.width, &model.height, &model.rate) != 4)
        return;
    model.fourcc = v4l2_fourcc(layout[0], layout[1], layout[2], layout[3]);
    bench::plugIn(model);
}

} // namespace
