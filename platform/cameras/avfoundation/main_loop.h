// The main thread's run loop, by which the framework notices what is plugged in and pulled out.
#ifndef OSTREL_PLATFORM_CAMERAS_AVFOUNDATION_MAIN_LOOP_H
#define OSTREL_PLATFORM_CAMERAS_AVFOUNDATION_MAIN_LOOP_H

namespace ostrel {
namespace cameras {
namespace avfoundation {

// Whether this is the main thread, and its loop does not turn: as in a console program, which has none.
bool isIdleMainThread();
// Turns the loop once if so, without waiting.
void turnIdleMainLoop();

} // namespace avfoundation
} // namespace cameras
} // namespace ostrel

#endif
