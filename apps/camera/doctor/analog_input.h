// Which input of a grabber is chosen.
#ifndef OSTREL_APPS_CAMERA_DOCTOR_ANALOG_INPUT_H
#define OSTREL_APPS_CAMERA_DOCTOR_ANALOG_INPUT_H

#include "apps/camera/doctor/machine.h"

namespace ostrel::apps::cli::doctor {

// descriptor: of an open video node. Not known for devices with one input and no television standard, as
// webcams are. Asks only.
AnalogInput analogInputOf(int descriptor);

} // namespace ostrel::apps::cli::doctor

#endif
