#include "apps/camera/doctor/checks.h"

namespace ostrel::apps::cli::doctor {

namespace {

void append(Findings& all, const Findings& more) {
    all.insert(all.end(), more.begin(), more.end());
}

} // namespace

Findings checkMachine(const Machine& machine) {
    if (!machine.tellsOfNodes)
        return Findings();
    Findings all = {checkNodes(machine)};
    append(all, checkPermissions(machine));
    append(all, checkFormats(machine));
    append(all, checkControllers(machine));
    append(all, checkPipeWire(machine));
    return all;
}

Findings checkCamera(const Machine& machine, const Trial& trial) {
    Findings all = {checkStart(machine, trial)};
    if (!trial.refused)
        append(all, checkStream(trial));
    append(all, checkControls(trial));
    append(all, checkInput(machine, trial));
    for (Finding& finding : all)
        finding.camera = trial.camera;
    return all;
}

} // namespace ostrel::apps::cli::doctor
