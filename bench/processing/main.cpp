// Conversion and scaling, beside the plain libyuv call, libswscale, OpenCV and memcpy. bench/report reads the
// JSON that --benchmark_out writes.
#include "bench/processing/workload.h"

#include <benchmark/benchmark.h>

int main(int argc, char** argv) {
    bench::addConversions();
    bench::addScales();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
