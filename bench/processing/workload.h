// One frame's work, done by the library, by the plain libyuv call behind it, by what a user would take
// instead, and by memcpy.
#ifndef OSTREL_BENCH_WORKLOAD_H
#define OSTREL_BENCH_WORKLOAD_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace bench {

enum class Layout { BGRA, RGB24, YUY2, I420 };

struct Picture {
    Layout layout;
    int width;
    int height;
    std::vector<uint8_t> bytes;

    uint8_t* data() { return bytes.data(); }
    uint8_t* plane(int index);   // of I420
    int stride(int index) const; // bytes
};

Picture makePicture(Layout layout, int width, int height);

// Does the work once.
using Work = std::function<void()>;

// Registers a benchmark "OPERATION/SIZE/CONTENDER". An empty work is left out.
void add(const std::string& operation, const std::string& size, const std::string& contender, Work work);

// memcpy that reads and writes as many bytes as the operation does.
Work memcpyOfTheSameTraffic(Picture& from, Picture& to);

// Filters by meaning.
enum class Filter { None, Bilinear, Box };

// Peers. Both pictures outlive the work; bottomUp reads the source from its last row on. Empty where a peer
// has no such conversion or is not installed.
Work swscale(Picture& from, Picture& to, Filter filter, bool bottomUp = false);
Work openCvConversion(Picture& from, Picture& to, bool bottomUp = false);
Work openCvScale(Picture& from, Picture& to, Filter filter);

void addConversions();
void addScales();

} // namespace bench

#endif
