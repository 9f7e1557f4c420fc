// The measurements. Each writes its results as it goes.
#ifndef OSTREL_BENCH_CAPTURE_SUITES_H
#define OSTREL_BENCH_CAPTURE_SUITES_H

#include <string>

namespace bench {

// The cost of a frame beside the floor, for every size, layout and habit of polling. rounds: how often
// everything is measured in turn, for a second each. only: a part of the names of the cameras to measure,
// "YUYV 1280x720".
bool measureCosts(int rounds, const std::string& only);
// What it costs to list, look up and capture from more and more cameras.
bool measureGrowth(int rounds);
// How old polled frames are, and how long the first frame takes.
bool measureLatency();
// What sixteen captures in four sizes take of memory: to be the only measurement of its process. cameras:
// "patterns of the same sizes", "patterns of 1280x720", "YUYV 1280x720" or "MJPEG 1280x720".
bool measureMemory(int seconds, const std::string& cameras);

} // namespace bench

#endif
