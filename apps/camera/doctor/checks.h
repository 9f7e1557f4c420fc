// The checks, in the order in which they are shown. Each looks at facts alone.
#ifndef OSTREL_APPS_CAMERA_DOCTOR_CHECKS_H
#define OSTREL_APPS_CAMERA_DOCTOR_CHECKS_H

#include "apps/camera/doctor/finding.h"
#include "apps/camera/doctor/machine.h"
#include "apps/camera/doctor/trial.h"

namespace ostrel::apps::cli::doctor {

// Of the machine.
Finding checkNodes(const Machine& machine);        // "nodes"
Findings checkPermissions(const Machine& machine); // "permission"
Findings checkFormats(const Machine& machine);     // "formats": nodes of which no format can be used
Findings checkControllers(const Machine& machine); // "libcamera": cameras that others must set up
Findings checkPipeWire(const Machine& machine);    // "pipewire"

// Of one camera.
Finding checkStart(const Machine& machine, const Trial& trial); // "start", "busy" or "bandwidth"
Findings checkStream(const Trial& trial);                       // "frames", "broken", "rate", "picture"
Findings checkControls(const Trial& trial);                     // "privacy", "exposure"
std::string keepsRateCommand(const Trial& trial);
Findings checkInput(const Machine& machine, const Trial& trial); // "input": of analog grabbers

Findings checkMachine(const Machine& machine);
Findings checkCamera(const Machine& machine, const Trial& trial);

} // namespace ostrel::apps::cli::doctor

#endif
