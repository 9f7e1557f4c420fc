#include "platform/cameras/messages.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace ostrel {
namespace cameras {

namespace {

bool isGone(int number) {
    return number == ENODEV || number == ENXIO || number == ENOENT;
}

Error inUse(const std::string& where) {
    return Error(where + " is in use by another program: close that program and try again", EBUSY);
}

// "White Balance Temperature of HD Webcam (/dev/video0)"
std::string of(const Control& control, const std::string& where) {
    return control.name + " of " + where;
}

std::string valuesOf(const Control& control) {
    const std::string limits = std::to_string(control.minimum) + " to " + std::to_string(control.maximum);
    if (control.type == Control::Type::Text)
        return "takes texts of " + limits + " bytes";
    if (control.type == Control::Type::Bitmask)
        return "takes bits of " + std::to_string(control.maximum);
    if (control.items.empty())
        return "takes " + limits;
    std::string words = "takes";
    for (const auto& item : control.items)
        words += (item.first == control.items.begin()->first ? " " : ", ") + std::to_string(item.first) +
                 " (" + item.second + ")";
    return words;
}

} // namespace

Error openFailed(const std::string& where, int number) {
    // The node's own permissions answer EACCES; EPERM comes from the rules of a container's or a service's
    // devices, and no group helps against them.
    if (number == EPERM)
        return Error("The container or service that this program runs in may not use " + where +
                         ": give it the device (--device for a container, DeviceAllow= for a service)",
                     number);
    if (number == EACCES)
        return Error(
            "No permission to open " + where +
                ": add your user to the group \"video\" (sudo usermod -aG video $USER) and log in again",
            number);
    if (isGone(number))
        return unplugged(where);
    if (number == EBUSY)
        return inUse(where);
    return Error("Cannot open " + where + ": " + reason(number), number);
}

Error notPermitted(const std::string& where, bool restricted) {
    const std::string page = "System Settings, Privacy & Security, Camera";
    if (restricted)
        return Error("Whoever manages this Mac does not let programs use " + where + " (" + page + ')',
                     EACCES);
    return Error("No permission to use " + where + ": allow it in " + page +
                     ", for this program or for the terminal that started it, and start it again",
                 EACCES);
}

Error notACamera(const std::string& where) {
    return Error(where + " is not a device that pictures can be captured from");
}

Error noUsableFormat(const std::string& where, const std::string& why) {
    return Error(where + ' ' + why);
}

// The last refusal says why no more was tried. Where all were, the first is of the mode that would have been
// the best.
Error startFailed(const std::string& where, const std::vector<Refusal>& refusals) {
    const int last = refusals.back().number;
    if (last == EBUSY)
        return inUse(where);
    if (isGone(last))
        return unplugged(where);
    const Refusal& first = refusals.front();
    const auto full = std::find_if(refusals.begin(), refusals.end(),
                                   [](const Refusal& one) { return one.number == ENOSPC; });
    std::string words;
    if (full != refusals.end())
        words = "Not enough USB bandwidth for " + where + " at " + text(full->size) +
                ": choose a smaller size, or plug the cameras into different USB controllers";
    else
        words = "Cannot start " + where + " at " + text(first.size) + " (" + first.step +
                "): " + reason(first.number);
    if (refusals.size() > 1) {
        words += "; tried";
        for (const Refusal& one : refusals)
            words += (&one == &first ? " " : ", ") + one.format + " " + text(one.size) + " (" + one.step +
                     ": " + reason(one.number) + ")";
    }
    return Error(words, full != refusals.end() ? ENOSPC : first.number);
}

Error streamFailed(const std::string& where, int number) {
    if (isGone(number))
        return unplugged(where);
    return Error(where + " stopped delivering frames: " + reason(number), number);
}

Error unplugged(const std::string& where) {
    return Error(where + " was unplugged", ENODEV);
}

Error modeNotOffered(const std::string& where, const ModeWish& wish) {
    return Error(where + " offers no mode that fits " + text(wish));
}

Error runsInAnotherMode(const std::string& where, const Mode& running, const ModeWish& wish) {
    ModeWish runs;
    runs.format = running.format;
    runs.size = running.size;
    runs.interval = running.interval;
    return Error(where + " runs for another program as " + text(runs) + ", which does not fit " + text(wish),
                 EBUSY);
}

Error modesUntold(const std::string& where, int number) {
    return isGone(number) ? unplugged(where)
                          : Error(where + " did not tell all of its modes: " + reason(number), number);
}

Error pipeWireFailed(const std::string& where, int number, bool isOpen) {
    if (isGone(number))
        return unplugged(where);
    if (number == EPIPE || number == EHOSTDOWN)
        return Error(where + " cannot be reached: PipeWire has ended", number);
    if (number == ETIMEDOUT)
        return Error("PipeWire, which has " + where + ", does not answer", number);
    if (number == ENOLINK)
        return Error("PipeWire " +
                         std::string(isOpen ? "has " + where + " open, but" : "offers " + where + ", but") +
                         " nobody connects this program with it: is a session manager (wireplumber) running?",
                     number);
    return Error("PipeWire cannot start " + where + ": " + reason(number), number);
}

Error refusedByBothWays(const Error& first, const Error& other) {
    return Error(first.text + "; and by another way: " + other.text, first.code);
}

Error notOpen(const std::string& where) {
    return Error(where + " is not open");
}

Error beingStopped(const std::string& where) {
    return Error(where + " is being stopped", EAGAIN);
}

Error noThread(const std::string& where) {
    return Error("The system gave no thread for " + where, EAGAIN);
}

Error notAttached(const std::string& identifier) {
    return Error("No camera with the identifier \"" + identifier + "\" is attached", ENODEV);
}

Error noControls(const std::string& where) {
    return Error(where + " has no controls", ENOTTY);
}

Error noSuchControl(const std::string& where, uint32_t id) {
    char number[16];
    std::snprintf(number, sizeof number, "0x%08x", static_cast<unsigned>(id));
    return Error(where + " has no control " + number, EINVAL);
}

Error controlAskedTwice(const std::string& where, const Control& control) {
    return Error(of(control, where) + " is to be set twice at once", EINVAL);
}

Error controlOutOfRange(const std::string& where, const Control& control) {
    return Error(of(control, where) + " " + valuesOf(control), ERANGE);
}

Error controlHeld(const std::string& where, const Control& control, const Control* automatic) {
    if (!automatic)
        return Error(of(control, where) + " is inactive: another setting of the camera has the say", EACCES);
    return Error(of(control, where) + " is inactive while " + automatic->name +
                     " has the say: set that to manual first, or at the same time",
                 EACCES);
}

Error controlRefused(const std::string& where, const Control& control, int number) {
    if (isGone(number))
        return unplugged(where);
    if (number == EACCES && control.readOnly)
        return Error(of(control, where) + " can only be read", number);
    if (number == EBUSY)
        return Error(of(control, where) + " cannot be changed while the camera is in use", number);
    return Error(of(control, where) + " cannot be set: " + reason(number), number);
}

Error controlsRefused(const std::string& where, int number) {
    if (isGone(number))
        return unplugged(where);
    return Error("The controls of " + where + " cannot be used: " + reason(number), number);
}

Error controlsUnwatched(const std::string& where) {
    return Error(where + " does not tell when its controls change", ENOTTY);
}

Error controlsHalfSet(const Error& why, const std::vector<std::string>& set) {
    std::string words = why.text;
    for (const std::string& name : set)
        words += (&name == &set.front() ? "; set all the same: " : ", ") + name;
    return Error(words, why.code);
}

std::string stalled(const std::string& where) {
    return where + " sends no frames and was started again";
}

std::string stalledForGood(const std::string& where, int restarts) {
    return where + " sends no frames, also after " + std::to_string(restarts) +
           " restarts: plug it in again, or try another cable or port";
}

std::string permissionAwaited(const std::string& where) {
    return where +
           " sends no frames until the system's question, whether this program may use cameras, is answered";
}

std::string interrupted(const std::string& where) {
    return where + " sends no frames: the system has interrupted it for another use";
}

std::string sharedAsItIs(const std::string& where, const Size& running, const Size& wanted,
                         const Error& why) {
    const std::string shared = where + " is shared at " + text(running);
    if (why.code == EINVAL && why.text.empty())
        return shared + ": it has no mode that serves " + text(wanted) + " better at the same rate";
    return shared + ", since " + text(wanted) +
           " was refused: " + (why.text.empty() ? reason(why.code) : why.text);
}

std::string text(const ModeWish& wish) {
    std::vector<std::string> parts;
    if (!wish.format.empty())
        parts.push_back(wish.format);
    if (wish.size.width != 0 && wish.size.height != 0)
        parts.push_back(text(wish.size));
    else if (wish.size.width != 0)
        parts.push_back(std::to_string(wish.size.width) + " pixels wide");
    else if (wish.size.height != 0)
        parts.push_back(std::to_string(wish.size.height) + " pixels high");
    if (wish.interval.known()) {
        char rate[32];
        std::snprintf(rate, sizeof rate, "%.4g", wish.interval.rate());
        parts.push_back(std::string("at ") + rate + "/s");
    }
    std::string all;
    for (const std::string& part : parts)
        all += (all.empty() ? "" : " ") + part;
    return all;
}

std::string text(const Size& size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

// Not strerror(), whose words are in the language and the bytes of the locale, nor any that is not
// thread-safe.
std::string reason(int number) {
#if defined(__GLIBC__)
    const char* words = number > 0 ? ::strerrordesc_np(number) : nullptr;
#else
    char buffer[128] = "";
    const char* words = number > 0 && ::strerror_r(number, buffer, sizeof buffer) == 0 ? buffer : nullptr;
#endif
    return words ? words : "unknown error " + std::to_string(number);
}

const char* reason(Drop reason) {
    switch (reason) {
    case Drop::Damaged:
        return "damaged";
    case Drop::UnknownBuffer:
        return "unknown buffer";
    case Drop::NoMemory:
        break;
    }
    return "out of memory";
}

} // namespace cameras
} // namespace ostrel
