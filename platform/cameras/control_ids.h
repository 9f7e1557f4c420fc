// Identifiers of controls that the library itself knows something about: V4L2's numbers, for every kind of
// camera.
#ifndef OSTREL_PLATFORM_CAMERAS_CONTROL_IDS_H
#define OSTREL_PLATFORM_CAMERAS_CONTROL_IDS_H

#include <cstdint>

namespace ostrel {
namespace cameras {
namespace controlid {

const uint32_t kUserClass = 0x00980000;
const uint32_t kBrightness = 0x00980900;
const uint32_t kHue = 0x00980903;
const uint32_t kAutoWhiteBalance = 0x0098090c;
const uint32_t kRedBalance = 0x0098090e;
const uint32_t kBlueBalance = 0x0098090f;
const uint32_t kExposure = 0x00980911;
const uint32_t kAutogain = 0x00980912;
const uint32_t kGain = 0x00980913;
const uint32_t kHueAuto = 0x00980919;
const uint32_t kWhiteBalanceTemperature = 0x0098091a;
const uint32_t kChromaAgc = 0x0098091d;
const uint32_t kAutobrightness = 0x00980920;
const uint32_t kChromaGain = 0x00980924;

const uint32_t kExposureAuto = 0x009a0901; // 0: all automatic, 1: manual, 2: only iris, 3: only exposure time
const uint32_t kExposureAbsolute = 0x009a0902;
const uint32_t kFocusAbsolute = 0x009a090a;
const uint32_t kFocusAuto = 0x009a090c;
const uint32_t kIrisAbsolute = 0x009a0911;
const uint32_t kPresetWhiteBalance = 0x009a0914; // 0: manual
const uint32_t kIsoSensitivity = 0x009a0917;
const uint32_t kIsoSensitivityAuto = 0x009a0918;

// Of virtual cameras alone, beyond what drivers use in the class.
const uint32_t kPatternSpeed = kUserClass | 0x1f00;

} // namespace controlid
} // namespace cameras
} // namespace ostrel

#endif
