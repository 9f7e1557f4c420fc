// ostrel-stateful [--seconds N] [--seed N] [--sequences N] [--trace]
//
// Random sequences of calls, in the allowed order or not, each answer compared with a model. A sequence is
// known by its seed: a failure prints it, and --seed N --sequences 1 --trace plays it again.
#include "stateful/world.h"
#include "support/process_figures.h"

#include <chrono>
#include <climits>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <thread>

namespace {

using ostrel::support::processFigures;
using ostrel::support::ProcessFigures;

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

// The names of the threads and what the descriptors refer to.
std::string whatThereIs() {
    namespace fs = std::filesystem;
    std::string text;
    std::error_code gone;
    for (const auto& thread : fs::directory_iterator("/proc/self/task")) {
        std::string name;
        std::getline(std::ifstream(thread.path() / "comm"), name);
        text += " " + name;
    }
    for (const auto& descriptor : fs::directory_iterator("/proc/self/fd"))
        text += " " + fs::read_symlink(descriptor, gone).string();
    return text;
}

void play(int seed, std::string* trace) {
    stateful::World world(static_cast<unsigned>(seed), trace);
    for (int step = 0; step < STEPS; ++step)
        world.step();
}

// One capture: what is made once and kept (Qt's, GNUstep's and GLib's, an event descriptor among it) is made
// here.
void warmUp() {
    ostrel::OVideoTestPatternCamera camera(QString::fromLatin1("warm-up"), QString::fromLatin1("Warm-up"));
    camera.attach();
    stateful::ModelledDriver driver;
    driver.start("warm-up", {320, 240}, true);
    driver.start("warm-up", {320, 240}, true); // the second start waits for the first
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

    warmUp();
    const ProcessFigures before = processFigures();
    int played = 0;
    for (; played < options.sequences && Clock::now() - begin < std::chrono::seconds(options.seconds);
         ++played) {
        const int seed = options.seed + played;
        std::string trace;
        try {
            play(seed, &trace);
            if (!backTo(before))
                throw stateful::Disagreement("threads or descriptors are left over:" + whatThereIs());
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
