#include "platform/cameras/messages.h"

#include <algorithm>
#include <cerrno>
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
