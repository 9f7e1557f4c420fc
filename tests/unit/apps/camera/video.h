// What ffprobe and ffmpeg find in a recording.
#ifndef OSTREL_TESTS_UNIT_APPS_CAMERA_VIDEO_H
#define OSTREL_TESTS_UNIT_APPS_CAMERA_VIDEO_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <vector>

namespace ostrel::tests {

struct Video {
    std::vector<double> times; // of its pictures, seconds
    double duration = -1;      // as stated; -1 when it states none
    int width = 0;
    int height = 0;
    QByteArray pictures; // all of them, one after the other
    int decoded = 0;     // how many of them
    QByteArray errors;   // of the decoder
};

Video readVideo(const QString& path);

} // namespace ostrel::tests

#endif
