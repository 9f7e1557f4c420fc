// ostrel-soak [--seconds N] [--cameras N] [--seed N]
//
// Cameras at 30 frames a second, each polled 60 times a second and now and then stopped and started again at
// another size. Every new frame is decoded. At the end, with all stopped, the process must be as it was
// before.
#include "soak/station.h"
#include "support/process_figures.h"

#include <ostrel/processing.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <iostream>
#include <malloc.h>
#include <memory>
#include <random>
#include <thread>
#include <vector>

namespace {

using ostrel::support::ProcessFigures;
using ostrel::support::processFigures;
using soak::Station;
using soak::Totals;

struct Options {
    int seconds = 30;
    int cameras = 16;
    unsigned seed = 1;
};

#ifndef OSTREL_MEMORY_IS_SANITIZED
// A stopped session leaves its framework objects behind; this is the most that one start may cost.
constexpr size_t BYTES_FOR_EACH_START = 4096;
// Room for what malloc keeps in its arenas and for what grows to its working size late.
constexpr size_t SLACK_BYTES = 16 * 1024 * 1024;
#endif
constexpr double FRAMES_PER_SECOND = 30;
constexpr int POLLS_PER_SECOND = 60;

class Soak {
public:
    explicit Soak(const Options& options) : random_(options.seed) {
        for (int i = 0; i < options.cameras; ++i)
            stations_.push_back(std::make_unique<Station>(i, FRAMES_PER_SECOND));
    }

    // Every camera at the largest size: brings each lazily made table and each kept buffer to its full size.
    void warmUp() {
        for (auto& station : stations_)
            station->start(ostrel::VIDEO_QUALITY_HD);
        runFor(std::chrono::seconds(3));
        stopAll();
        totals_.starts = 0;
    }

    void runFor(std::chrono::milliseconds time) {
        using Clock = std::chrono::steady_clock;
        const Clock::time_point begin = Clock::now();
        Clock::time_point next = begin;
        while (next - begin < time) {
            stopOrStartOne();
            for (auto& station : stations_)
                if (station->running())
                    station->poll(
                        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count(),
                        totals_);
            // A machine that cannot keep up polls less often instead of ever later.
            next = std::max(next + std::chrono::microseconds(1000000 / POLLS_PER_SECOND), Clock::now());
            std::this_thread::sleep_until(next);
        }
    }

    void stopAll() {
        for (auto& station : stations_)
            station->stop();
    }

    const Totals& totals() const { return totals_; }

private:
    // About three times a second one camera changes its state.
    void stopOrStartOne() {
        Station& station = *stations_[random_() % stations_.size()];
        if (!station.running()) {
            station.start(static_cast<int>(random_() % 10 ? random_() % 2 : 2)); // large frames are rare
            ++totals_.starts;
        } else if (random_() % 40 == 0) {
            station.stop();
        }
    }

    std::mt19937 random_;
    std::vector<std::unique_ptr<Station>> stations_;
    Totals totals_;
};

bool parse(int argc, char** argv, Options& options) {
    for (int i = 1; i + 1 < argc; i += 2) {
        const int value = std::atoi(argv[i + 1]);
        if (!std::strcmp(argv[i], "--seconds"))
            options.seconds = value;
        else if (!std::strcmp(argv[i], "--cameras"))
            options.cameras = value;
        else if (!std::strcmp(argv[i], "--seed"))
            options.seed = static_cast<unsigned>(value);
        else
            return false;
    }
    return argc % 2 == 1 && options.seconds > 0 && options.cameras > 0;
}

// Without what malloc holds back for the next request: 16 clients come and go, and that is not a leak.
ProcessFigures figuresAtRest() {
    malloc_trim(0);
    return processFigures();
}

void print(const char* when, const ProcessFigures& figures) {
    std::cout << when << ": " << figures.threads << " threads, " << figures.descriptors
              << " descriptors, heap " << figures.heapBytes / 1024 << " KiB, resident "
              << figures.residentBytes / 1024 << " KiB" << std::endl;
}

bool expect(bool good, const char* what) {
    if (!good)
        std::cout << "FAILED: " << what << std::endl;
    return good;
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    if (!parse(argc, argv, options)) {
        std::cerr << "usage: ostrel-soak [--seconds N] [--cameras N] [--seed N]\n";
        return 2;
    }
    std::cout << "seed " << options.seed << std::endl;
    Soak soak(options);
    soak.warmUp();
    const ProcessFigures before = figuresAtRest();
    print("before", before);
    soak.runFor(std::chrono::seconds(options.seconds));
    print("running", processFigures());
    soak.stopAll();
    const ProcessFigures after = figuresAtRest();
    print("after", after);

    const Totals& totals = soak.totals();
    std::cout << totals.starts << " starts, " << totals.polls << " polls, " << totals.frames
              << " new frames, " << totals.torn << " torn, " << totals.backwards << " backwards, "
              << totals.silent << " silent" << std::endl;
    bool good = expect(totals.frames > 0, "no frame arrived");
    good &= expect(totals.torn == 0, "torn frames");
    good &= expect(totals.backwards == 0, "counters went back");
    good &= expect(totals.silent == 0, "captures without frames");
    good &= expect(after.threads <= before.threads, "threads are left over");
    good &= expect(after.descriptors <= before.descriptors, "descriptors are left over");
#ifdef OSTREL_MEMORY_IS_SANITIZED
    std::cout << "memory is not compared: a sanitizer holds it back" << std::endl;
#else
    const size_t allowed = static_cast<size_t>(totals.starts) * BYTES_FOR_EACH_START;
    good &= expect(after.heapBytes <= before.heapBytes + allowed, "the heap grew");
    good &= expect(after.residentBytes <= before.residentBytes + allowed + SLACK_BYTES, "the process grew");
#endif
    std::cout << (good ? "all good" : "not good") << std::endl;
    return good ? 0 : 1;
}
