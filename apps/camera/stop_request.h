// The wish to end early: Ctrl-C, or the signals by which a system ends its programs.
#ifndef OSTREL_APPS_CAMERA_STOP_REQUEST_H
#define OSTREL_APPS_CAMERA_STOP_REQUEST_H

#include <chrono>

namespace ostrel::apps::cli {

// While it lives, the first SIGINT, SIGTERM or SIGHUP is only noted, so that files can be ended properly; the
// second does what it always does. A signal that was ignored on entry stays ignored. One object at a time.
class StopRequest {
public:
    StopRequest();
    ~StopRequest();
    StopRequest(const StopRequest&) = delete;
    StopRequest& operator=(const StopRequest&) = delete;

    bool raised() const { return signal() != 0; }
    int signal() const; // 0 before
    // Until the descriptor is readable or a signal comes; -1: none, a signal alone. False: the time is over.
    // May return early.
    bool wait(int descriptor, std::chrono::steady_clock::time_point until) const;
};

} // namespace ostrel::apps::cli

#endif
