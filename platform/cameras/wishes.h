// What the program has asked for ahead of any start, for as long as the process lives.
#ifndef OSTREL_PLATFORM_CAMERAS_WISHES_H
#define OSTREL_PLATFORM_CAMERAS_WISHES_H

#include "platform/cameras/modes.h"

#include <string>

namespace ostrel {
namespace cameras {

// Thread-safe, and at once, as is everything here.

// In which mode a camera's streams are to be started; by identifier, since it holds for whatever object
// stands for the camera after it was plugged in again. Any mode where nothing was set.
ModeWish modeWish(const std::string& identifier);
void setModeWish(const std::string& identifier, const ModeWish& wish);

// Whether cameras without a format that has a picture are cameras to this process.
bool nativeOnlyIsListed();
void listNativeOnly(bool list);

} // namespace cameras
} // namespace ostrel

#endif
