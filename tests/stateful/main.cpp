// ostrel-stateful [--seconds N] [--seed N] [--sequences N] [--trace]
//
// Random sequences of calls, in the allowed order or not, each answer compared with a model. A sequence is
// known by its seed: a failure prints it, and --seed N --sequences 1 --trace plays it again.
#include "stateful/world.h"
#include "support/process_figures.h"

#include <chrono>
#include <climits>
#include <cstring>
#include <iostream>
#include <thread>

namespace {

using ostrel::testing_support::processFigures;
using ostrel::testing_support::ProcessFigures;

struct Options {
    int seconds = 20;
    int seed = 0; // of the first sequence; 0: by the clock
    int sequences = INT_MAX;
    bool trace = false;
};

constexpr int STEPS = 60;

bool parse(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        const std::string name = argv[i];
        if (name == "--trace") {
            options.trace = true;
            continue;
        }
        if (++i == argc)
            return false;
        const int value = std::atoi(argv[i]);
        if (name == "--seconds")
            options.seconds = value;
        else if (name == "--seed")
            options.seed = value;
        else if (name == "--sequences")
            options.sequences = value;
        else
            return false;
    }
    return true;
}

// Threads end a little after they were joined, as the system counts them.
bool backTo(const ProcessFigures& before) {
    for (int attempt = 0; attempt < 2000; ++attempt) {
        const ProcessFigures now = processFigures();
        if (now.threads <= before.threads && now.descriptors <= before.descriptors)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
}

void play(int seed, std::string* trace) {
    stateful::World world(static_cast<unsigned>(seed), trace);
    for (int step = 0; step < STEPS; ++step)
        world.step();
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    if (!parse(argc, argv, options)) {
        std::cerr << "usage: ostrel-stateful [--seconds N] [--seed N] [--sequences N] [--trace]\n";
        return 2;
    }
    using Clock = std::chrono::steady_clock;
    const Clock::time_point begin = Clock::now();
    if (options.seed == 0)
        options.seed =
            static_cast<int>(std::chrono::system_clock::now().time_since_epoch().count() % 1000000000);
    std::cout << "first seed " << options.seed << std::endl;
    // The library's own lines would bury everything else.
    std::cerr.setstate(std::ios::failbit);

    play(options.seed, nullptr); // what is made once and kept, is made here
    const ProcessFigures before = processFigures();
    int played = 0;
    for (; played < options.sequences && Clock::now() - begin < std::chrono::seconds(options.seconds);
         ++played) {
        const int seed = options.seed + played;
        std::string trace;
        try {
            play(seed, &trace);
            stateful::expect(backTo(before), "threads or descriptors are left over");
        } catch (const stateful::Disagreement& disagreement) {
            std::cout << trace << "sequence " << seed << ": " << disagreement.what() << std::endl;
            return 1;
        }
        if (options.trace)
            std::cout << trace;
    }
    const ProcessFigures after = processFigures();
    std::cout << played << " sequences of " << STEPS << " steps, heap " << before.heapBytes / 1024 << " -> "
              << after.heapBytes / 1024 << " KiB" << std::endl;
    return 0;
}
