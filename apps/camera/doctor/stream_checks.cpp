// How well a camera that runs delivers.
#include "apps/camera/doctor/checks.h"
#include "apps/camera/stream_report.h"
#include "apps/common/text.h"

namespace ostrel::apps::cli::doctor {

namespace {

// Cameras may spoil a frame while they start.
const uint64_t FEW_FRAMES = 2;
const double SMALL_SHARE = 0.02;
const double LARGE_SHARE = 0.2;
// Rates of cameras are rough, and so is a measurement of two seconds.
const double RATE_SHARE = 0.8;
// Of 255: noise in the dark stays below.
const int BLACK = 24;

std::string watchCommand(const Trial& trial) {
    return "ostrel-camera watch -c " + quoted(trial.camera);
}

std::string percent(double share) {
    return fixed(share * 100, share < 0.1 ? 1 : 0) + " %";
}

Finding framesCame(const Trial& trial) {
    Finding finding{"frames", Verdict::Ok, "frames come", {}, {}};
    if (!trial.why.empty()) {
        finding.verdict = Verdict::Problem;
        finding.fact =
            (trial.taken == 0 ? "it starts, but no frame comes: " : "the frames have ended: ") + trial.why;
        finding.next = "plug it into another port with another cable, then run this again";
    } else if (trial.waited > 0 && trial.taken == 0 && !trial.statistics.dropped.isEmpty()) {
        finding.verdict = Verdict::Problem;
        finding.fact = "all that it sends is broken, dropped " + droppedText(trial.statistics);
        finding.next = watchCommand(trial) + " --size ld";
    } else if (trial.waited > 0) {
        finding.verdict = Verdict::Problem;
        finding.fact = trial.taken == 0 ? "it starts, but sends no frame" : "it has stopped sending frames";
        finding.fact += " within " + fixed(trial.waited, 1) + " s: its privacy switch may be on";
        finding.next = trial.path.empty() ? watchCommand(trial)
                                          : "v4l2-ctl -d " + trial.path + " --stream-mmap --stream-count=30";
    }
    return finding;
}

Finding broken(const Trial& trial) {
    const double all = static_cast<double>(trial.arrived + 1);
    const double share = static_cast<double>(trial.wasted) / all;
    Finding finding{"broken", Verdict::Ok, {}, {}, {}};
    finding.fact = std::to_string(trial.statistics.lost) + " lost, " + droppedText(trial.statistics) +
                   " dropped of " + std::to_string(trial.arrived + 1) + " frames";
    if (trial.wasted > FEW_FRAMES && share > SMALL_SHARE) {
        finding.verdict = share > LARGE_SHARE ? Verdict::Problem : Verdict::Warning;
        finding.fact = percent(share) + " of the frames do not arrive whole: " + finding.fact;
        finding.next = watchCommand(trial) + " --duration 60, with another cable or port";
    }
    return finding;
}

Finding rate(const Trial& trial) {
    const double measured = static_cast<double>(trial.arrived) / trial.seconds;
    const double granted = trial.statistics.grantedRate;
    Finding finding{"rate", Verdict::Ok, {}, {}, {}};
    finding.fact = fixed(measured, 1) + " frames/s";
    if (granted > 0)
        finding.fact += ", " + fixed(granted, 1) + " granted";
    if (granted > 0 && measured < granted * RATE_SHARE) {
        finding.verdict = Verdict::Warning;
        finding.fact += ": most cameras slow down in poor light";
        finding.next = trial.slowsInTheDark.value_or(false)
                           ? keepsRateCommand(trial)
                           : "ostrel-camera controls -c " + quoted(trial.camera) + " (auto_exposure)";
    }
    return finding;
}

Finding picture(const Trial& trial) {
    if (trial.brightest >= BLACK)
        return {"picture", Verdict::Ok, "the picture is not black", {}, {}};
    return {
        "picture",
        Verdict::Warning,
        "the picture is black: its lens may be covered, its privacy switch on, or this part of the device "
        "an infrared camera",
        "ostrel-camera snapshot --skip 30 -c " + quoted(trial.camera),
        {}};
}

} // namespace

Findings checkStream(const Trial& trial) {
    Findings findings = {framesCame(trial)};
    if (trial.taken == 0)
        return findings;
    findings.push_back(broken(trial));
    if (trial.seconds > 0)
        findings.push_back(rate(trial));
    findings.push_back(picture(trial));
    return findings;
}

} // namespace ostrel::apps::cli::doctor
