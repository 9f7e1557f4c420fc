// What ends a command early: an exit code and the one line that says what to do.
#ifndef OSTREL_APPS_CAMERA_FAILURE_H
#define OSTREL_APPS_CAMERA_FAILURE_H

#include "apps/camera/exit_codes.h"

#include <stdexcept>
#include <string>

namespace ostrel {
namespace cli {

class Failure : public std::runtime_error {
public:
    Failure(int exitCode, const std::string& line) : std::runtime_error(line), code_(exitCode) {}
    int code() const { return code_; }

private:
    int code_;
};

// A signal asked for the end before the work was done. Nothing is printed for it.
class Interrupted : public Failure {
public:
    explicit Interrupted(int signal) : Failure(EXIT_SIGNAL + signal, "interrupted") {}
};

} // namespace cli
} // namespace ostrel

#endif
