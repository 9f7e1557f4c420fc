// Why a camera could not do something: one line for people, empty when nothing is wrong.
#ifndef OSTREL_PLATFORM_CAMERAS_ERROR_H
#define OSTREL_PLATFORM_CAMERAS_ERROR_H

#include <string>
#include <utility>

namespace ostrel {
namespace cameras {

struct Error {
    Error() = default;
    explicit Error(std::string what, int number = -1) : text(std::move(what)), code(number) {}
    // Without words, for who must not allocate: they are made from the number when somebody asks.
    static Error numbered(int number) {
        Error error;
        error.code = number;
        return error;
    }

    explicit operator bool() const { return code != 0; }

    std::string text; // UTF-8, says what to do where something can be done
    int code = 0;     // errno where the kernel said it, -1 otherwise; 0: no error
};

} // namespace cameras
} // namespace ostrel

#endif
