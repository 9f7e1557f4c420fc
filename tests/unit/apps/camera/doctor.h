// Machines and captures that are made up, and what doctor says of them.
#ifndef OSTREL_TESTS_UNIT_APPS_CAMERA_DOCTOR_H
#define OSTREL_TESTS_UNIT_APPS_CAMERA_DOCTOR_H

#include "apps/camera/doctor/checks.h"
#include "apps/camera/doctor/finding.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ostrel::tests {

using namespace apps::cli::doctor;

const char ID[] = "usb-1-at-x";

inline Node webcam() {
    Node node;
    node.path = "/dev/video0";
    node.name = "Webcam";
    node.camera = ID;
    node.group = "video";
    node.bus = "usb1";
    return node;
}

inline Machine machineWith(const std::vector<Node>& nodes) {
    Machine machine;
    machine.usb = {{"Webcam", "1-3", "uvcvideo"}};
    machine.nodes = nodes;
    return machine;
}

// Two seconds of a camera in which nothing is wrong.
inline Trial healthy() {
    Trial trial;
    trial.camera = ID;
    trial.path = "/dev/video0";
    trial.size = {640, 480};
    trial.taken = 61;
    trial.arrived = 60;
    trial.seconds = 2;
    trial.brightest = 250;
    trial.statistics.delivered = 61;
    trial.statistics.grantedRate = 30;
    return trial;
}

inline Trial refused(const std::string& why) {
    Trial trial = healthy();
    trial.refused = true;
    trial.why = why;
    return trial;
}

inline const Finding& only(const Findings& findings, Verdict verdict) {
    static Finding none;
    const Finding* found = &none;
    for (const Finding& finding : findings)
        if (finding.verdict == verdict) {
            EXPECT_EQ(found, &none) << finding.fact;
            found = &finding;
        }
    EXPECT_NE(found, &none) << findingsText(findings);
    return *found;
}

// "problem check: fact | next"
inline std::string text(const Finding& finding) {
    const char* const words[] = {"ok", "warning", "problem"};
    return std::string(words[static_cast<int>(finding.verdict)]) + " " + finding.check + ": " + finding.fact +
           (finding.next.empty() ? "" : " | " + finding.next);
}

} // namespace ostrel::tests

#endif
