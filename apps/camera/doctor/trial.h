// A capture from one camera, for a short time, and what came of it.
#ifndef OSTREL_APPS_CAMERA_DOCTOR_TRIAL_H
#define OSTREL_APPS_CAMERA_DOCTOR_TRIAL_H

#include "apps/camera/frame_stream.h"

#include <optional>
#include <string>

namespace ostrel::apps::cli::doctor {

struct Trial {
    std::string camera; // its identifier
    std::string path;   // of its node; empty when it has none
    Size size;          // that was asked for

    bool refused = false; // no mode could be started, or it did not open
    std::string why;      // no frames came, or no more; the library's words, empty where it has none
    double waited = 0;    // seconds for a frame that did not come; 0 when frames came
    uint64_t taken = 0;
    uint64_t arrived = 0; // all that the camera sent since the first one taken, good or not
    uint64_t wasted = 0;  // of those, lost on the way or dropped
    double seconds = 0;   // between the first and the last
    int brightest = 255;  // of the colours of the last picture, 0 to 255
    OVideoStatistics statistics;

    // What its controls say; nothing where it has none for it.
    std::optional<bool> privacy;        // its privacy switch is on
    std::optional<bool> slowsInTheDark; // it may lower its rate for longer exposures
};

// Captures until enough is known: a few seconds, or the timeout where nothing comes. Throws Interrupted.
Trial tryCamera(const Camera& camera, const Size& size, double timeoutSeconds, const StopRequest& stop);

// 0 to 255: the largest value of a colour in a BGRA picture.
int brightestOf(const std::vector<uint8_t>& bgra);

} // namespace ostrel::apps::cli::doctor

#endif
