// What a camera's controls have to do with what it sends.
#include "apps/camera/doctor/checks.h"
#include "apps/common/text.h"

namespace ostrel::apps::cli::doctor {

Findings checkControls(const Trial& trial) {
    Findings findings;
    if (trial.privacy)
        findings.push_back(
            *trial.privacy ? Finding{"privacy",
                                     Verdict::Warning,
                                     "the privacy switch is on: the camera sends black pictures or none",
                                     "open its shutter, or press the key that closes it, then run this again",
                                     {}}
                           : Finding{"privacy", Verdict::Ok, "the privacy switch is off", {}, {}});
    if (trial.slowsInTheDark && *trial.slowsInTheDark)
        findings.push_back({"exposure",
                            Verdict::Ok,
                            "it may take longer exposures in the dark, and fewer frames",
                            keepsRateCommand(trial),
                            {}});
    else if (trial.slowsInTheDark)
        findings.push_back({"exposure", Verdict::Ok, "it keeps its rate in the dark", {}, {}});
    return findings;
}

std::string keepsRateCommand(const Trial& trial) {
    return "ostrel-camera controls -c " + quoted(trial.camera) +
           " exposure_dynamic_framerate=0 keeps the rate, with darker pictures";
}

} // namespace ostrel::apps::cli::doctor
