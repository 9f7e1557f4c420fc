// What a camera says when something fails: one line for people, with what to do where something can be done.
// The one place where these words are made, in UTF-8 whatever the locale is.
#ifndef OSTREL_PLATFORM_CAMERAS_MESSAGES_H
#define OSTREL_PLATFORM_CAMERAS_MESSAGES_H

#include "platform/cameras/controls.h"
#include "platform/cameras/error.h"
#include "platform/cameras/figures.h"
#include "platform/cameras/format_choice.h"
#include "platform/cameras/modes.h"

#include <string>
#include <vector>

namespace ostrel {
namespace cameras {

// A mode that a driver would not start.
struct Refusal {
    std::string format; // four characters
    Size size;
    std::string step; // the call that failed
    int number;       // the errno
};

// `where` names the camera and its node: "HD Webcam (/dev/video0)". `number` is the errno.
Error openFailed(const std::string& where, int number);
// The user has refused it, or must not grant it.
Error notPermitted(const std::string& where, bool restricted);
Error notACamera(const std::string& where);
// `why`: "offers only H264 (compressed video, ...)"
Error noUsableFormat(const std::string& where, const std::string& why);
// What was tried, in this order; not empty.
Error startFailed(const std::string& where, const std::vector<Refusal>& refusals);
Error streamFailed(const std::string& where, int number);
Error unplugged(const std::string& where);
Error modeNotOffered(const std::string& where, const ModeWish& wish);
// For another program, which has to stop first.
Error runsInAnotherMode(const std::string& where, const Mode& running, const ModeWish& wish);
// The errno with which a driver broke off.
Error modesUntold(const std::string& where, int number);
// A camera that PipeWire offers. `isOpen`: PipeWire itself has its device open at present. ENOLINK: nobody
// has connected it.
Error pipeWireFailed(const std::string& where, int number, bool isOpen);
// Neither by the first way nor by another that there is.
Error refusedByBothWays(const Error& first, const Error& other);
Error notOpen(const std::string& where);
Error beingStopped(const std::string& where);
Error noThread(const std::string& where);

Error notAttached(const std::string& identifier);

// Of controls. `automatic`: the one that has the say over it; null where nobody knows.
Error noControls(const std::string& where);
Error noSuchControl(const std::string& where, uint32_t id);
Error controlAskedTwice(const std::string& where, const Control& control);
Error controlOutOfRange(const std::string& where, const Control& control);
Error controlHeld(const std::string& where, const Control& control, const Control* automatic);
Error controlRefused(const std::string& where, const Control& control, int number);
Error controlsRefused(const std::string& where, int number); // by a driver that does not say which
Error controlsUnwatched(const std::string& where);           // by a driver that does not tell of changes
Error controlsHalfSet(const Error& why, const std::vector<std::string>& set);

// What is said of a stream that runs.
std::string stalled(const std::string& where);
std::string stalledForGood(const std::string& where, int restarts);
std::string permissionAwaited(const std::string& where);
std::string interrupted(const std::string& where);
std::string sharedAsItIs(const std::string& where, const Size& running, const Size& wanted, const Error& why);

// "MJPG 1280x720 at 60/s", of what is wished for.
std::string text(const ModeWish& wish);
// "640x480"
std::string text(const Size& size);
// An errno in words; -1 in words as well.
std::string reason(int number);
// Why frames were dropped, in a word or two: the keys of the statistics.
const char* reason(Drop reason);

} // namespace cameras
} // namespace ostrel

#endif
