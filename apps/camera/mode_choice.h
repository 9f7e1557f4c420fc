// The native mode that --mode asks for.
#ifndef OSTREL_APPS_CAMERA_MODE_CHOICE_H
#define OSTREL_APPS_CAMERA_MODE_CHOICE_H

#include "apps/camera/y4m.h"
#include "apps/common/size.h"

#include <ostrel/modes.h>

#include <optional>
#include <string>

namespace ostrel::apps::cli {

// What is empty may be anything.
struct WantedMode {
    std::string format; // "MJPG"
    Size size;
    std::optional<Rate> rate;
};

// What a message says that parseMode() takes.
const char MODE_NAMES[] =
    "FORMAT:SIZE@RATE with any of the three left out, such as MJPG:1280x720@60, hd@30 or YUYV";

// Nothing for anything else. What stands alone and is a size is one.
std::optional<WantedMode> parseMode(const std::string& text);

// As the library takes it. A format that none of these modes has is taken in the letter case of one that has.
OVideoMode wishOf(const WantedMode& wanted, const QList<OVideoMode>& offered);

// Has the library start the camera in it. Throws a Failure with EXIT_USAGE when the camera does not offer it.
void requestMode(const std::string& identifier, const WantedMode& wanted);

} // namespace ostrel::apps::cli

#endif
