// What the test pattern's colour bars look like, and how to find them in a picture.
#ifndef OSTREL_TESTS_VIEWER_COLOURS_H
#define OSTREL_TESTS_VIEWER_COLOURS_H

#include <QtGui/QImage>

#include <array>
#include <cstdlib>
#include <string>

namespace ostrel::tests {

// Eight letters for the eight bars from left to right: White, Yellow, Cyan, Green, Magenta, Red, Blue, blacK.
const char BARS[] = "WYCGMRBK";
const char MIRRORED_BARS[] = "KBRMGCYW";
// The bars stand in the upper half. At this part of the height nothing is drawn over them.
const double BARS_HEIGHT = 12.5 / 30;

// The letter of a colour; '?' for one that is none of a bar's. Scaling and limited-range YUV shift each
// channel by a few.
inline char letterOf(QRgb colour) {
    const auto level = [](int channel) { return channel > 235 ? 1 : channel < 20 ? 0 : -1; };
    const int red = level(qRed(colour)), green = level(qGreen(colour)), blue = level(qBlue(colour));
    if (red < 0 || green < 0 || blue < 0)
        return '?';
    return "KBGCRMYW"[red * 4 + green * 2 + blue];
}

// The colours of the middles of eight bars that fill the width of the rectangle.
inline std::string barsIn(const QImage& image, const QRect& place) {
    std::string letters;
    const int y = place.top() + static_cast<int>(place.height() * BARS_HEIGHT);
    for (int bar = 0; bar < 8; ++bar) {
        const int x = place.left() + place.width() * (2 * bar + 1) / 16;
        letters += image.rect().contains(x, y) ? letterOf(image.pixel(x, y)) : '-';
    }
    return letters;
}

inline std::string barsIn(const QImage& image) {
    return barsIn(image, image.rect());
}

} // namespace ostrel::tests

#endif
