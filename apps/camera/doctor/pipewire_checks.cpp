// Whether PipeWire's cameras can be had. Without a daemon there is nothing wrong: cameras with a video node
// need none.
#include "apps/camera/doctor/checks.h"
#include "apps/common/text.h"

namespace ostrel::apps::cli::doctor {

namespace {

unsigned long long count(int number) {
    return static_cast<unsigned long long>(number);
}

Finding warning(const std::string& fact, const std::string& next) {
    return {"pipewire", Verdict::Warning, fact, next, {}};
}

Finding connected(const PipeWire& pipeWire) {
    const std::string which = "PipeWire " + pipeWire.version;
    if (!pipeWire.sessionManager)
        return warning(which + " runs without a session manager: no camera of it starts",
                       "systemctl --user start wireplumber");
    std::string fact = which + " offers " + counted(count(pipeWire.cameras), "camera");
    if (pipeWire.cameras == 0 && pipeWire.otherSources > 0)
        fact += ", and " + counted(count(pipeWire.otherSources), "source") + " of other pictures";
    if (pipeWire.cameras > 0)
        fact += ", " + std::to_string(pipeWire.added) + " of them without a video node";
    return {"pipewire", Verdict::Ok, fact, {}, {}};
}

} // namespace

Findings checkPipeWire(const Machine& machine) {
    const PipeWire& pipeWire = machine.pipeWire;
    switch (pipeWire.state) {
    case PipeWire::State::NotBuilt:
        return {};
    case PipeWire::State::NoDaemon:
        return {{"pipewire",
                 Verdict::Ok,
                 "no daemon at " + pipeWire.where + ": cameras with a video node only",
                 {},
                 {}}};
    case PipeWire::State::NoLibrary:
        return {warning("a daemon runs, but its library is not installed",
                        "sudo apt-get install libpipewire-0.3-0")};
    case PipeWire::State::Silent:
        return {warning("the daemon at " + pipeWire.where + " does not answer",
                        "systemctl --user restart pipewire")};
    case PipeWire::State::Connected:
        break;
    }
    return {connected(pipeWire)};
}

} // namespace ostrel::apps::cli::doctor
