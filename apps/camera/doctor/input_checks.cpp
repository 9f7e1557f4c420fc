// Grabbers with analog inputs: the library captures from whatever input and standard stand.
#include "apps/camera/doctor/checks.h"

namespace ostrel::apps::cli::doctor {

Findings checkInput(const Machine& machine, const Trial& trial) {
    const Node* const node = machine.nodeOf(trial.camera);
    if (!node || !node->input.known)
        return {};
    const AnalogInput& input = node->input;
    Finding finding{"input", Verdict::Ok, {}, {}, {}};
    finding.fact = "input " + std::to_string(input.number) + " (" + input.name + ") of " +
                   std::to_string(input.count) +
                   (input.standard.empty() ? "" : ", standard " + input.standard);
    if (input.noSignal) {
        finding.verdict = Verdict::Warning;
        finding.fact += ", without a signal";
    }
    const int other = input.count > 1 ? (input.number + 1) % input.count : input.number;
    finding.next = "v4l2-ctl -d " + node->path + " --set-input " + std::to_string(other) +
                   (input.standard.empty() ? "" : " --set-standard " + input.standard) +
                   " changes it, also while a program captures";
    return {finding};
}

} // namespace ostrel::apps::cli::doctor
