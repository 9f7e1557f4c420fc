// Between the modes of the core and those of the interface.
#ifndef OSTREL_PLATFORM_CAMERAS_MODE_ACCESS_H
#define OSTREL_PLATFORM_CAMERAS_MODE_ACCESS_H

#include <ostrel/modes.h>

#include "platform/cameras/modes.h"

namespace ostrel {

struct OVideoModePrivate {
    cameras::NativeMode mode;

    static OVideoMode make(const cameras::NativeMode& mode);
    static const cameras::NativeMode& of(const OVideoMode& mode) { return mode.d->mode; }
};

} // namespace ostrel

#endif
