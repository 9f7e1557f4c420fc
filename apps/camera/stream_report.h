// The figures of a running stream as one line.
#ifndef OSTREL_APPS_CAMERA_STREAM_REPORT_H
#define OSTREL_APPS_CAMERA_STREAM_REPORT_H

#include "apps/camera/frame_stream.h"

#include <ostrel/statistics.h>

#include <string>

namespace ostrel::apps::cli {

// "12.0 s  29.9/s  taken 359  skipped 1  dropped 2 (short frame 2)  lost 0  asked 640x480, granted MJPG
// 640x480 at 30/s". asked: the size that the capture was started with.
std::string streamReport(const StreamFigures& figures, const OVideoStatistics& statistics, const Size& asked);

// "2 (short frame 1, broken picture 1)", or "0".
std::string droppedText(const OVideoStatistics& statistics);

} // namespace ostrel::apps::cli

#endif
