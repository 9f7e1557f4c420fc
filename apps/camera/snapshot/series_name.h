// The names of the pictures of a series.
#ifndef OSTREL_APPS_CAMERA_SNAPSHOT_SERIES_NAME_H
#define OSTREL_APPS_CAMERA_SNAPSHOT_SERIES_NAME_H

#include <cstdint>
#include <ctime>
#include <string>

namespace ostrel::apps::cli {

// A path in which %d or %04d stands for the number of the picture, or %Y, %m, %d, %H, %M, %S and whatever
// else strftime() knows for its time. One that has neither is not a series.
bool isSeriesPath(const std::string& path);
// number: from 1.
std::string seriesPath(const std::string& path, uint64_t number, std::time_t time);

} // namespace ostrel::apps::cli

#endif
