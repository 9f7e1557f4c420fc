// What is known of a device beside the camera itself: for those who ask why it is none, and for those who
// look for one by something else than its identifier.
#ifndef OSTREL_PLATFORM_CAMERAS_NODE_REPORT_H
#define OSTREL_PLATFORM_CAMERAS_NODE_REPORT_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace ostrel {
namespace cameras {

// Texts are UTF-8.
struct NodeReport {
    std::string path;       // "/dev/video0"
    uint64_t device = 0;    // its number (st_rdev), by which other paths to it are known; 0 when it has none
    std::string name;       // for people
    std::string identifier; // of the camera; empty when it is none
    std::string reason;     // why it is none, or what stands against its use; empty when all is well
    std::vector<std::string> formerIdentifiers; // that earlier releases may have given the camera
    // How its identifier begins and ends wherever it is plugged in; both empty when that is not known.
    std::pair<std::string, std::string> inAnyPort;
};

} // namespace cameras
} // namespace ostrel

#endif
