// Frames and files for the tests, made and read without the code under test.
#ifndef OSTREL_TESTS_UNIT_APPS_CAMERA_FRAMES_H
#define OSTREL_TESTS_UNIT_APPS_CAMERA_FRAMES_H

#include <QtCore/QByteArray>
#include <QtCore/QList>

#include <cstdint>
#include <vector>

namespace ostrel::tests {

using Bytes = std::vector<uint8_t>;

// A frame of width x height in B, G, R, A: the top half red, the bottom half blue, the left column white.
Bytes flagArgb(int width, int height);
// The same in B, G, R.
Bytes flagRgb24(int width, int height, bool bottomUp);
// One grey level in I420.
Bytes greyI420(int width, int height, uint8_t level);

struct Y4mFile {
    QByteArray header; // the first line, without its line break; empty when the file is none
    QList<QByteArray> frames;
    QByteArray rest; // behind the last whole frame
};

Y4mFile readY4m(const QByteArray& file, int width, int height);

// The counters of the test pattern in frames of I420. A frame that cannot be read answers 0.
std::vector<uint32_t> countersOf(const Y4mFile& file, int width, int height);

QByteArray toByteArray(const Bytes& bytes);

} // namespace ostrel::tests

#endif
