// Whether the camera starts; if not, who or what stands in the way.
#include "apps/camera/doctor/checks.h"
#include "apps/common/text.h"

namespace ostrel::apps::cli::doctor {

namespace {

// The library's own words, which the tests hold together with these.
bool saysBusy(const std::string& why) {
    return why.find("in use by another program") != std::string::npos;
}

bool saysNoBandwidth(const std::string& why) {
    return why.find("Not enough USB bandwidth") != std::string::npos;
}

Finding busy(const Node* node) {
    Finding finding{"busy", Verdict::Problem, {}, {}, {}};
    const std::string path = node ? node->path : std::string();
    if (!node || node->holders.empty()) {
        finding.fact = "it is in use by another user's program";
        finding.next = "sudo fuser -v " + path;
        return finding;
    }
    std::vector<std::string> programs;
    for (const Holder& holder : node->holders)
        programs.push_back(holder.program + " (process " + std::to_string(holder.process) + ")");
    finding.fact = "it is in use by " + join(programs, ", ");
    finding.next = "close " + node->holders.front().program + ", then run this again";
    return finding;
}

Finding crowded(const Machine& machine, const Node* node, const Trial& trial) {
    std::vector<std::string> others;
    for (const Node& other : machine.nodes)
        if (node && !node->bus.empty() && other.bus == node->bus && !other.camera.empty() &&
            other.path != node->path)
            others.push_back(other.name + " (" + other.path + ")");
    std::string fact = trial.why;
    fact += others.empty() ? "; no other camera is on its bus" : "; on its bus: " + join(others, ", ");
    return {
        "bandwidth", Verdict::Problem, fact, "ostrel-camera watch --size ld -c " + quoted(trial.camera), {}};
}

} // namespace

Finding checkStart(const Machine& machine, const Trial& trial) {
    const Node* const node = machine.nodeOf(trial.camera);
    if (!trial.refused)
        return {"start", Verdict::Ok, "it starts at " + toString(trial.size), {}, {}};
    if (saysBusy(trial.why))
        return busy(node);
    if (saysNoBandwidth(trial.why))
        return crowded(machine, node, trial);
    const bool closed = node && (node->access == Node::Access::NotPermitted ||
                                 node->access == Node::Access::Denied); // that has a check of its own
    const std::string next =
        closed ? "" : "ostrel-camera snapshot --verbose -o /dev/null -c " + quoted(trial.camera);
    return {"start", Verdict::Problem, "it does not start: " + trial.why, next, {}};
}

} // namespace ostrel::apps::cli::doctor
