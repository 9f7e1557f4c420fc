// Identifiers of controls that the library itself knows something about: V4L2's numbers, for every kind of
// camera.
#ifndef OSTREL_PLATFORM_CAMERAS_CONTROL_IDS_H
#define OSTREL_PLATFORM_CAMERAS_CONTROL_IDS_H

#include <cstdint>

namespace ostrel {
namespace cameras {
namespace controlid {

const uint32_t USER_CLASS = 0x00980000;
const uint32_t BRIGHTNESS = 0x00980900;
const uint32_t HUE = 0x00980903;
const uint32_t AUTO_WHITE_BALANCE = 0x0098090c;
const uint32_t RED_BALANCE = 0x0098090e;
const uint32_t BLUE_BALANCE = 0x0098090f;
const uint32_t EXPOSURE = 0x00980911;
const uint32_t AUTOGAIN = 0x00980912;
const uint32_t GAIN = 0x00980913;
const uint32_t HUE_AUTO = 0x00980919;
const uint32_t WHITE_BALANCE_TEMPERATURE = 0x0098091a;
const uint32_t CHROMA_AGC = 0x0098091d;
const uint32_t AUTOBRIGHTNESS = 0x00980920;
const uint32_t CHROMA_GAIN = 0x00980924;

const uint32_t EXPOSURE_AUTO = 0x009a0901; // 0: all automatic, 1: manual, 2: only iris, 3: only exposure time
const uint32_t EXPOSURE_ABSOLUTE = 0x009a0902;
const uint32_t FOCUS_ABSOLUTE = 0x009a090a;
const uint32_t FOCUS_AUTO = 0x009a090c;
const uint32_t IRIS_ABSOLUTE = 0x009a0911;
const uint32_t PRESET_WHITE_BALANCE = 0x009a0914; // 0: manual
const uint32_t ISO_SENSITIVITY = 0x009a0917;
const uint32_t ISO_SENSITIVITY_AUTO = 0x009a0918;

// Of virtual cameras alone, beyond what drivers use in the class.
const uint32_t PATTERN_SPEED = USER_CLASS | 0x1f00;

} // namespace controlid
} // namespace cameras
} // namespace ostrel

#endif
