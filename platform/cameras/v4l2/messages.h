// What a camera says when something fails: one line for people, with what to do where something can be done.
#ifndef OSTREL_PLATFORM_CAMERAS_V4L2_MESSAGES_H
#define OSTREL_PLATFORM_CAMERAS_V4L2_MESSAGES_H

#include "platform/cameras/error.h"
#include "platform/cameras/v4l2/format_choice.h"

#include <string>

namespace ostrel {
namespace cameras {
namespace v4l2 {

// `where` names the camera and its node: "HD Webcam (/dev/video0)". `number` is the errno.
Error openFailed(const std::string& where, int number);
Error notACamera(const std::string& where);
Error noUsableFormat(const std::string& where);
Error startFailed(const std::string& where, const std::string& step, int number, const Size& size);
Error streamFailed(const std::string& where, int number);
Error unplugged(const std::string& where);

} // namespace v4l2
} // namespace cameras
} // namespace ostrel

#endif
