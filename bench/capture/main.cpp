// The path of a frame from a camera to the client, measured on timed cameras. bench/report reads what it
// writes.
#include "bench/capture/suites.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

int main(int argc, char** argv) {
    const char* suite = argc > 1 ? argv[1] : "";
    const int rounds = argc > 2 ? std::atoi(argv[2]) : 5;
    bool done = false;
    if (std::strcmp(suite, "costs") == 0)
        done = bench::measureCosts(rounds, argc > 3 ? argv[3] : "");
    else if (std::strcmp(suite, "growth") == 0)
        done = bench::measureGrowth(rounds);
    else if (std::strcmp(suite, "latency") == 0)
        done = bench::measureLatency();
    else if (std::strcmp(suite, "memory") == 0)
        done = bench::measureMemory(rounds, argc > 3 ? argv[3] : "");
    else
        std::fprintf(stderr, "usage: bench_capture costs|growth|latency [ROUNDS [PART OF A CAMERA'S NAME]]\n"
                             "       bench_capture memory SECONDS CAMERAS\n");
    if (!done)
        std::fprintf(stderr, "bench_capture: %s was not measured\n", suite);
    return done ? 0 : 1;
}
