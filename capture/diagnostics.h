// Lines on the standard error stream.
#ifndef OSTREL_CAPTURE_DIAGNOSTICS_H
#define OSTREL_CAPTURE_DIAGNOSTICS_H

#include <stdint.h>

namespace ostrel {
namespace diagnostics {

// While one with `quiet` lives, its thread writes no line. Nests.
class Silence {
public:
    explicit Silence(bool quiet);
    ~Silence();
    static bool isKept();

private:
    Silence(const Silence&);
    Silence& operator=(const Silence&);
    const bool before_;
};

// Each writes one line and flushes. A line goes out in one piece, so that lines of several threads do not
// mix, and without allocating, so that destructors may write. Any thread may call.
void line(const char* text);
void line(const char* text, const void* address); // the address follows as the stream prints a pointer
void line(int64_t number);

} // namespace diagnostics
} // namespace ostrel

#endif
