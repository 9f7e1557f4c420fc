// On macOS cameras are no files, and whether they may be used is told when one is opened.
#include "apps/camera/doctor/machine.h"

namespace ostrel::apps::cli::doctor {

Machine thisMachine() {
    Machine machine;
    machine.tellsOfNodes = false;
    return machine;
}

} // namespace ostrel::apps::cli::doctor
