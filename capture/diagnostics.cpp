#include "capture/diagnostics.h"

#include <inttypes.h>
#include <iostream>
#include <stdio.h>

namespace ostrel {
namespace diagnostics {

namespace {

// Longer than the longest text with an address behind it.
const int LINE_SIZE = 128;

thread_local bool silent = false;

void write(const char* bytes, int length) {
    if (silent)
        return;
    std::cerr.write(bytes, length < LINE_SIZE ? length : LINE_SIZE - 1);
    std::cerr.flush();
}

} // namespace

Silence::Silence(bool quiet) : before_(silent) {
    silent = silent || quiet;
}

Silence::~Silence() {
    silent = before_;
}

bool Silence::isKept() {
    return silent;
}

void line(const char* text) {
    char buffer[LINE_SIZE];
    write(buffer, snprintf(buffer, sizeof buffer, "%s\n", text));
}

void line(const char* text, const void* address) {
    char buffer[LINE_SIZE];
    write(buffer, snprintf(buffer, sizeof buffer, "%s%p\n", text, address));
}

void line(int64_t number) {
    char buffer[LINE_SIZE];
    write(buffer, snprintf(buffer, sizeof buffer, "%" PRId64 "\n", number));
}

} // namespace diagnostics
} // namespace ostrel
