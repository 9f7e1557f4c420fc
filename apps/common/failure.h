// What ends a program early: an exit code and the one line that says what to do.
#ifndef OSTREL_APPS_COMMON_FAILURE_H
#define OSTREL_APPS_COMMON_FAILURE_H

#include <stdexcept>
#include <string>

namespace ostrel::apps {

// Scripts rely on them: a number never changes its meaning.
enum ExitCode {
    EXIT_OK = 0,
    EXIT_INTERNAL = 1,
    EXIT_USAGE = 2,
    EXIT_NO_CAMERA = 3,
    EXIT_NO_SUCH_CAMERA = 4,
    EXIT_CANNOT_OPEN = 5,
    EXIT_NO_FRAME = 6,
    EXIT_FILE = 7,
    EXIT_PROBLEM = 8,
    EXIT_NOT_SET = 9,
    EXIT_SIGNAL = 128 // plus the number of the signal
};

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

} // namespace ostrel::apps

#endif
