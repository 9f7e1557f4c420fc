// ostrel-camera doctor
#include "apps/camera/commands.h"
#include "apps/camera/doctor/checks.h"
#include "apps/camera/output_file.h"
#include "apps/common/failure.h"

namespace ostrel::apps::cli {

namespace {

// Of the machine, or of what the machine has to do with the one camera.
doctor::Findings machineFindings(const doctor::Machine& machine, const std::vector<Camera>& cameras,
                                 bool everything) {
    if (everything)
        return doctor::checkMachine(machine);
    doctor::Machine one;
    one.container = machine.container;
    for (const Camera& camera : cameras)
        if (const doctor::Node* node = machine.nodeOf(camera.identifier))
            one.nodes.push_back(*node);
    return doctor::checkPermissions(one);
}

} // namespace

int runDoctor(const Options& options, const Context& context) {
    const AddedCameras added = addCameras(options.camera, options.size());
    const bool everything = options.camera.camera.empty() && added.identifiers().isEmpty();
    const std::vector<Camera> cameras =
        everything ? attachedCameras() : std::vector<Camera>{chooseCamera(options.camera, added)};
    const doctor::Machine machine = doctor::thisMachine();
    doctor::Findings findings = machineFindings(machine, cameras, everything);
    for (const Camera& camera : cameras) {
        context.messages.say("examining " + camera.name);
        doctor::Trial trial = doctor::tryCamera(camera, options.size(), options.camera.timeout, context.stop);
        if (const doctor::Node* node = machine.nodeOf(camera.identifier))
            trial.path = node->path;
        const doctor::Findings more = doctor::checkCamera(machine, trial);
        findings.insert(findings.end(), more.begin(), more.end());
    }
    OutputFile output("-", OutputFile::Mode::Stream);
    output.write(options.doctor.json ? doctor::findingsJson(findings) : doctor::findingsText(findings));
    output.commit();
    return doctor::worst(findings) == doctor::Verdict::Problem ? EXIT_PROBLEM : EXIT_OK;
}

} // namespace ostrel::apps::cli
