// Whether a node is a camera, and why not, in words.
#ifndef OSTREL_PLATFORM_CAMERAS_V4L2_EXAMINATION_H
#define OSTREL_PLATFORM_CAMERAS_V4L2_EXAMINATION_H

#include "platform/cameras/v4l2/discovery.h"
#include "platform/cameras/v4l2/identity.h"
#include "platform/cameras/v4l2/kernel_calls.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ostrel {
namespace cameras {
namespace v4l2 {

struct Examination {
    bool isCamera = false;
    bool nativeOnly = false; // it would be one if its formats had a picture
    bool isFinal = false;    // the node itself has answered
    NodeTexts texts;
    std::string reason; // why it is no camera, or why it cannot be asked; empty when all is well
};

// What is known without a look: udev has described the node.
Examination byDescription(const NodeFacts& facts);

// Opens the node and asks, which may take as long as the hardware likes.
Examination examine(const std::shared_ptr<KernelCalls>& kernel, const NodeFacts& facts);

// A camera that may not be opened is listed all the same: opening it tells what to do about it. Only its
// first node, since the others are mostly metadata.
Examination withoutAnswer(const NodeFacts& facts, const std::string& reason);

} // namespace v4l2
} // namespace cameras
} // namespace ostrel

#endif
