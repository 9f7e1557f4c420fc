#include "bench/processing/workload.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>

namespace bench {

uint8_t* Picture::plane(int index) {
    const int luma = width * height;
    return data() + (index == 0 ? 0 : index == 1 ? luma : luma + luma / 4);
}

int Picture::stride(int index) const {
    switch (layout) {
    case Layout::BGRA:
        return width * 4;
    case Layout::RGB24:
        return width * 3;
    case Layout::YUY2:
        return width * 2;
    case Layout::I420:
        break;
    }
    return index == 0 ? width : width / 2;
}

Picture makePicture(Layout layout, int width, int height) {
    Picture picture = {layout, width, height, {}};
    const int bytes = layout == Layout::I420 ? width * height * 3 / 2 : picture.stride(0) * height;
    picture.bytes.resize(static_cast<size_t>(bytes));
    uint32_t noise = 1;
    for (uint8_t& byte : picture.bytes) {
        noise = noise * 1664525u + 1013904223u;
        byte = static_cast<uint8_t>(noise >> 24);
    }
    return picture;
}

void add(const std::string& operation, const std::string& size, const std::string& contender, Work work) {
    if (!work)
        return;
    const std::string name = operation + "/" + size + "/" + contender;
    benchmark::RegisterBenchmark(name.c_str(), [work](benchmark::State& state) {
        for (auto _ : state) {
            work();
            benchmark::ClobberMemory();
        }
    });
}

Work memcpyOfTheSameTraffic(Picture& from, Picture& to) {
    const size_t bytes = (from.bytes.size() + to.bytes.size()) / 2;
    auto target = std::make_shared<std::vector<uint8_t>>(bytes);
    auto source = std::make_shared<std::vector<uint8_t>>(bytes, uint8_t{1});
    return [=] { std::memcpy(target->data(), source->data(), bytes); };
}

#ifndef HAVE_SWSCALE
Work swscale(Picture&, Picture&, Filter, bool) {
    return nullptr;
}
#endif

#ifndef HAVE_OPENCV
Work openCvConversion(Picture&, Picture&, bool) {
    return nullptr;
}
Work openCvScale(Picture&, Picture&, Filter) {
    return nullptr;
}
#endif

} // namespace bench
