#include "apps/camera/snapshot/series_name.h"

#include "apps/camera/frame_writer.h"

#include <vector>

namespace ostrel::apps::cli {

namespace {

// %d is the day of the month only beside others.
bool hasTime(const std::string& path) {
    for (std::size_t at = path.find('%'); at != std::string::npos && at + 1 < path.size();
         at = path.find('%', at + 2))
        if (std::string("aAbBcDeFgGHIjklmMpPrRsSTuUVwWxXyYzZ").find(path[at + 1]) != std::string::npos)
            return true;
    return false;
}

} // namespace

bool isSeriesPath(const std::string& path) {
    return hasTime(path) || isNumberedPath(path);
}

std::string seriesPath(const std::string& path, uint64_t number, std::time_t time) {
    if (!hasTime(path))
        return numberedPath(path, number);
    std::tm parts = {};
    localtime_r(&time, &parts);
    std::vector<char> name(path.size() * 8 + 256);
    const std::size_t length = std::strftime(name.data(), name.size(), path.c_str(), &parts);
    return std::string(name.data(), length);
}

} // namespace ostrel::apps::cli
