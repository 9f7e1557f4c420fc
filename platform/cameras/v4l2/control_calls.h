// The kernel's calls for controls, asked in questions. All of them drivers may lack, or answer wrongly.
#ifndef OSTREL_PLATFORM_CAMERAS_V4L2_CONTROL_CALLS_H
#define OSTREL_PLATFORM_CAMERAS_V4L2_CONTROL_CALLS_H

#include "platform/cameras/controls.h"
#include "platform/cameras/v4l2/video_node.h"

#include <cstdint>
#include <vector>

namespace ostrel {
namespace cameras {
namespace v4l2 {

// The node's controls that have a single number or a text, with the values of now. 0 or errno; a node that
// has none is no error.
int listControls(const VideoNode& node, std::vector<Control>& controls);

// Reads the values anew of what listControls() has found.
int readValues(const VideoNode& node, std::vector<Control>& controls);

// Sets all to the values that they have here. 0 or errno; `culprit` is then the one that was refused, null
// where the driver does not say.
int setValues(const VideoNode& node, const std::vector<Control>& wanted, const Control*& culprit);

} // namespace v4l2
} // namespace cameras
} // namespace ostrel

#endif
