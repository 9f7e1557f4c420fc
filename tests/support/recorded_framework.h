// Stand-ins for QTKit and CoreVideo that write down, in order, every message that they get: what a capture
// does can be compared to the letter. Into the same transcript go
//   | text         the lines on the standard error stream
//   lock, unlock   the session object's own lock
//   name = value   what of the session object changed since the entry before
#ifndef OSTREL_TESTS_SUPPORT_RECORDED_FRAMEWORK_H
#define OSTREL_TESTS_SUPPORT_RECORDED_FRAMEWORK_H

#include <CoreVideo/CoreVideo.h>

#include <cstdint>
#include <string>
#include <vector>

namespace ostrel::recorded {

using Transcript = std::vector<std::string>;

// Cameras are called camera0, camera1, ...; what a capture makes session, input and output, each with the
// number of its making from 1 on.
struct Machine {
    std::vector<const char*> identifiers; // of its cameras; null: the camera has no such text
    bool opens = true, takesInput = true, takesOutput = true;
    bool named = true; // whether its cameras have names to display
};

// Begins anew: an empty transcript, another machine. Its objects of before are gone or belong to nobody.
void begin(const Machine& machine);

void note(const std::string& entry);
Transcript take(); // since the last call

// The session object whose variables are watched from now on; null for none.
void watch(void* sessionObject);
// The byte is watched as "destination"; null for none.
void watchDestination(const uint8_t* byte);

int flushes();         // of the standard error stream since begin()
int watchedPoolEnds(); // how often the watched object's pool was deallocated since begin()

// A frame with one owner. base may be null.
CVBufferRef makeFrame(const char* name, void* base, size_t bytesPerRow, size_t height);

} // namespace ostrel::recorded

#endif
