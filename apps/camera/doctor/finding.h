// What one check of the doctor has found.
#ifndef OSTREL_APPS_CAMERA_DOCTOR_FINDING_H
#define OSTREL_APPS_CAMERA_DOCTOR_FINDING_H

#include <string>
#include <vector>

namespace ostrel::apps::cli::doctor {

enum class Verdict { Ok, Warning, Problem };

struct Finding {
    std::string check; // one word, for scripts too
    Verdict verdict = Verdict::Ok;
    std::string fact;   // one line
    std::string next;   // the one command or step that helps, or shows more; empty where there is none
    std::string camera; // the identifier of the camera that was examined; empty for the machine
};

using Findings = std::vector<Finding>;

// The gravest; Ok where nothing was found.
Verdict worst(const Findings& findings);

// "problem  busy         ...", and below it the next step; cameras stand under their names.
std::string findingsText(const Findings& findings);
// {"verdict": "ok", "checks": [{"check", "verdict", "fact", "next", "camera"}]}, ending with a line break.
std::string findingsJson(const Findings& findings);

} // namespace ostrel::apps::cli::doctor

#endif
