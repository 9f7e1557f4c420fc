// Why a camera gives no picture here.
#ifndef OSTREL_PLATFORM_CAMERAS_UNUSABLE_FORMATS_H
#define OSTREL_PLATFORM_CAMERAS_UNUSABLE_FORMATS_H

#include <cstdint>
#include <string>
#include <vector>

namespace ostrel {
namespace cameras {

// Why nothing can be done with a camera that offers these formats and no other.
std::string unusableFormats(const std::vector<uint32_t>& formats);

} // namespace cameras
} // namespace ostrel

#endif
