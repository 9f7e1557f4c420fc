// Cameras that are there and give no picture that can be used. The library says so of their nodes, in words
// that name the formats and what is needed.
#include "apps/camera/doctor/checks.h"
#include "apps/common/text.h"

namespace ostrel::apps::cli::doctor {

namespace {

bool says(const Node& node, const char* words) {
    return node.camera.empty() && node.reason.find(words) != std::string::npos;
}

} // namespace

Findings checkFormats(const Machine& machine) {
    Findings findings;
    for (const Node& node : machine.nodes)
        if (says(node, "offers only ") || says(node, "offers no pixel format"))
            findings.push_back({"formats",
                                Verdict::Warning,
                                node.name + " (" + node.path + ") " + node.reason,
                                "v4l2-ctl -d " + node.path + " --list-formats-ext",
                                {}});
    return findings;
}

// Such a camera has dozens of nodes.
Findings checkControllers(const Machine& machine) {
    std::vector<std::string> paths;
    for (const Node& node : machine.nodes)
        if (says(node, "media controller"))
            paths.push_back(node.path);
    if (paths.empty())
        return {};
    const std::string which = paths.size() == 1 ? paths.front() + " is a part"
                                                : paths.front() + " to " + paths.back() + " are parts";
    const std::string of = which + " of a camera that needs libcamera";
    const std::string nodes = " (media controller, " + counted(paths.size(), "node") + ")";
    const PipeWire& pipeWire = machine.pipeWire;
    if (pipeWire.added > 0)
        return {{"libcamera", Verdict::Ok, of + ", as PipeWire offers it" + nodes, {}, {}}};
    if (pipeWire.state == PipeWire::State::Connected)
        return {{"libcamera",
                 Verdict::Warning,
                 of + ", and PipeWire shows none" + nodes,
                 "sudo apt-get install libspa-0.2-libcamera, then systemctl --user restart wireplumber",
                 {}}};
    return {{"libcamera",
             Verdict::Warning,
             of + ", for example through PipeWire" + nodes,
             "cam --list (in the package libcamera-tools) shows whether libcamera knows it",
             {}}};
}

} // namespace ostrel::apps::cli::doctor
