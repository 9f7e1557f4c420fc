// Whether a frame's picture is made before the delegate is called, for nobody if need be, or when it is asked
// for (platform/QTKit/captured_picture.h).
#ifndef OSTREL_TESTS_SUPPORT_EAGER_PICTURES_H
#define OSTREL_TESTS_SUPPORT_EAGER_PICTURES_H

namespace ostrel::support {

#ifdef OSTREL_EAGER_PICTURES
constexpr bool PICTURES_ARE_EAGER = true;
#else
constexpr bool PICTURES_ARE_EAGER = false;
#endif

} // namespace ostrel::support

#endif
