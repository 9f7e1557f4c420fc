// What can be set of a camera beside its mode: brightness, exposure, focus and the like.
#ifndef OSTREL_PLATFORM_CAMERAS_CONTROLS_H
#define OSTREL_PLATFORM_CAMERAS_CONTROLS_H

#include "platform/cameras/error.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ostrel {
namespace cameras {

// Identifiers, types, numbers and units are V4L2's, whatever kind the camera is; texts are UTF-8.
struct Control {
    enum class Type {
        Integer = 1,
        Boolean = 2,
        Menu = 3,
        Button = 4,
        Integer64 = 5,
        Text = 7,
        Bitmask = 8,
        IntegerMenu = 9
    };

    uint32_t id = 0;
    std::string name;
    Type type = Type::Integer;
    int64_t minimum = 0;
    int64_t maximum = 0;
    int64_t step = 1;
    int64_t defaultValue = 0;
    std::map<int, std::string> items; // of menus; some between minimum and maximum may be missing

    bool hasValue = false; // it could be read
    int64_t value = 0;
    std::string text;

    bool inactive = false;  // another control has the say
    uint32_t automatic = 0; // that may have it; 0: none is known
    bool readOnly = false;
    bool writeOnly = false;
    bool isVolatile = false; // changes by itself, untold
    bool grabbed = false;    // cannot be set for now
};

// Sees controls change, until it is destroyed. Bound to one thread.
class ControlWatch {
public:
    virtual ~ControlWatch() = default;
    // Readable for as long as take() has something to give, or the camera has left.
    virtual int descriptor() const = 0;
    // Appends what has changed since the last call, each once, as it is now. An error: nothing will come any
    // more.
    virtual Error take(std::vector<Control>& changed) = 0;
};

// Of one camera, for as long as it is attached, whether it is open, streams or does nothing. Thread-safe. All
// but where() and leave() reach the hardware; nobody may hold a lock over them that another question needs.
class Controls {
public:
    virtual ~Controls() = default;

    virtual const std::string& where() const = 0; // the camera, for messages
    // In the driver's order, with the values of now.
    virtual Error list(std::vector<Control>& controls) = 0;
    // Sets all to the values that they have here, or none where the hardware can do that. What list() said of
    // them has been looked at before.
    virtual Error set(const std::vector<Control>& wanted) = 0;
    virtual Error watch(std::unique_ptr<ControlWatch>& watch) = 0;
    // The camera was unplugged by hand: every watch is told.
    virtual void leave() {}
};

} // namespace cameras
} // namespace ostrel

#endif
