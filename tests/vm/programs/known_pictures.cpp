#include "vm/programs/known_pictures.h"

#include <cstdlib>
#include <ostream>

namespace ostrel::vm {

namespace {

struct Color {
    int red, green, blue;
};

std::ostream& operator<<(std::ostream& out, const Color& color) {
    return out << color.red << "," << color.green << "," << color.blue;
}

bool near(const Color& a, const Color& b, int tolerance) {
    return std::abs(a.red - b.red) <= tolerance && std::abs(a.green - b.green) <= tolerance &&
           std::abs(a.blue - b.blue) <= tolerance;
}

Color colorAt(const VideoFrame& frame, int x, int y) {
    const uint8_t* pixel =
        frame.data.data() +
        (static_cast<size_t>(y) * static_cast<size_t>(frame.width) + static_cast<size_t>(x)) * 4;
    return Color{pixel[2], pixel[1], pixel[0]};
}

// Numbers from 0 to 1 for the place in the picture.
testing::AssertionResult hasColor(const VideoFrame& frame, double across, double down, const Color& wanted,
                                  int tolerance = TOLERANCE) {
    const int x = static_cast<int>(across * frame.width);
    const int y = static_cast<int>(down * frame.height);
    const Color seen = colorAt(frame, x, y);
    if (near(seen, wanted, tolerance)) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "at " << x << "," << y << " of " << frame.width << "x"
                                       << frame.height << ": " << seen << " instead of " << wanted;
}

testing::AssertionResult isWhole(const VideoFrame& frame) {
    const size_t wanted = static_cast<size_t>(frame.width) * static_cast<size_t>(frame.height) * 4;
    if (wanted == 0 || frame.data.size() != wanted) {
        return testing::AssertionFailure()
               << frame.width << "x" << frame.height << " in " << frame.data.size() << " bytes";
    }
    for (size_t alpha = 3; alpha < frame.data.size(); alpha += 4) {
        if (frame.data[alpha] != 255) {
            return testing::AssertionFailure()
                   << "alpha of pixel " << alpha / 4 << " is " << int(frame.data[alpha]);
        }
    }
    return testing::AssertionSuccess();
}

} // namespace

testing::AssertionResult showsColorBars(const VideoFrame& frame, int tolerance) {
    static const Color BARS[] = {{191, 191, 191}, {191, 191, 0}, {0, 191, 191}, {0, 191, 0},
                                 {191, 0, 191},   {191, 0, 0},   {0, 0, 191},   {0, 0, 0}};
    testing::AssertionResult result = isWhole(frame);
    for (int bar = 0; bar < 8 && result; ++bar) {
        // The middle, and near both edges: a shifted row or a wrong stride moves the edges first.
        for (const double across : {bar + 0.1, bar + 0.5, bar + 0.9}) {
            for (const double down : {0.01, 0.5, 0.99}) {
                if (result) {
                    result = hasColor(frame, across / 8, down, BARS[bar], tolerance);
                }
            }
        }
    }
    return result;
}

testing::AssertionResult showsStripes(const VideoFrame& frame) {
    static const Color GREY = {192, 192, 192};
    static const Color STRIPES[] = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}};
    testing::AssertionResult result = isWhole(frame);
    for (int stripe = 0; stripe < 3 && result; ++stripe) {
        for (const double down : {stripe + 0.2, stripe + 0.7}) {
            for (const double across : {0.05, 0.2}) {
                if (result) {
                    result = hasColor(frame, across, down / 3, GREY);
                }
            }
            for (const double across : {0.3, 0.6, 0.95}) {
                if (result) {
                    result = hasColor(frame, across, down / 3, STRIPES[stripe]);
                }
            }
        }
    }
    return result;
}

} // namespace ostrel::vm
