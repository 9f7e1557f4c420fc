#include "platform/cameras/v4l2/messages.h"

#include <cerrno>
#include <system_error>

namespace ostrel {
namespace cameras {
namespace v4l2 {

namespace {

std::string reason(int number) {
    return std::generic_category().message(number); // strerror() is not thread-safe
}

bool isGone(int number) {
    return number == ENODEV || number == ENXIO || number == ENOENT;
}

Error inUse(const std::string& where) {
    return Error(where + " is in use by another program: close that program and try again", EBUSY);
}

} // namespace

Error openFailed(const std::string& where, int number) {
    if (number == EACCES || number == EPERM)
        return Error(
            "No permission to open " + where +
                ": add your user to the group \"video\" (sudo usermod -aG video $USER) and log in again",
            number);
    if (isGone(number))
        return Error(unplugged(where).text, number);
    if (number == EBUSY)
        return inUse(where);
    return Error("Cannot open " + where + ": " + reason(number), number);
}

Error notACamera(const std::string& where) {
    return Error(where + " is not a device that pictures can be captured from");
}

Error noUsableFormat(const std::string& where) {
    return Error(where + " offers no pixel format that can be converted");
}

Error startFailed(const std::string& where, const std::string& step, int number, const Size& size) {
    const std::string pixels = std::to_string(size.width) + "x" + std::to_string(size.height);
    if (number == EBUSY)
        return inUse(where);
    if (isGone(number))
        return Error(unplugged(where).text, number);
    if (number == ENOSPC)
        return Error("Not enough USB bandwidth for " + where + " at " + pixels +
                         ": choose a smaller size, or plug the cameras into different USB controllers",
                     number);
    return Error("Cannot start " + where + " at " + pixels + " (" + step + "): " + reason(number), number);
}

Error streamFailed(const std::string& where, int number) {
    if (isGone(number))
        return Error(unplugged(where).text, number);
    return Error(where + " stopped delivering frames: " + reason(number), number);
}

Error unplugged(const std::string& where) {
    return Error(where + " was unplugged", ENODEV);
}

} // namespace v4l2
} // namespace cameras
} // namespace ostrel
