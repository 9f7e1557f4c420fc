// How large pictures can be.
#ifndef OSTREL_BASE_LIMITS_H
#define OSTREL_BASE_LIMITS_H

namespace ostrel {

// Pixels on one side. Beyond any camera's pictures, and within what libyuv's int arithmetic holds every
// product of.
const int LARGEST_SIDE = 16384;

} // namespace ostrel

#endif
