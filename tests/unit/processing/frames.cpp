#include "unit/processing/frames.h"

#include <algorithm>
#include <math.h>
#include <sstream>

namespace ostrel::tests {

std::ostream& operator<<(std::ostream& out, const Size& size) {
    return out << size.width << "x" << size.height;
}

const std::vector<Size>& evenSizes() {
    static const std::vector<Size> sizes = {{2, 2},     {4, 2},      {34, 18},   {320, 240},
                                            {640, 480}, {1278, 718}, {1280, 720}};
    return sizes;
}

const std::vector<Size>& oddSizes() {
    static const std::vector<Size> sizes = {{1, 1},   {3, 3},     {5, 2},     {4, 3},
                                            {33, 17}, {641, 479}, {1279, 719}};
    return sizes;
}

std::vector<Size> allSizes() {
    std::vector<Size> sizes = evenSizes();
    sizes.insert(sizes.end(), oddSizes().begin(), oddSizes().end());
    return sizes;
}

size_t argbBytes(Size size) {
    return static_cast<size_t>(size.width * size.height * 4);
}

size_t rgb24Bytes(Size size) {
    return static_cast<size_t>(size.width * size.height * 3);
}

size_t yuy2Bytes(Size size) {
    const int lastRow = size.width % 2 == 0 ? size.width * 2 : (size.width + 1) * 2;
    return static_cast<size_t>((size.height - 1) * size.width * 2 + lastRow);
}

size_t i420Bytes(Size size) {
    const int luma = size.width * size.height;
    const int chromaRows = (size.height + 1) / 2;
    const int vEnd = luma + luma / 4 + (chromaRows - 1) * (size.width / 2) + (size.width + 1) / 2;
    return static_cast<size_t>(std::max(vEnd, luma * 3 / 2));
}

Bytes noise(size_t count, uint32_t seed) {
    Bytes bytes(count);
    uint32_t state = seed * 2654435761u + 12345u;
    for (uint8_t& byte : bytes) {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<uint8_t>(state >> 24);
    }
    return bytes;
}

Guarded::Guarded(size_t count) : all_(noise(count + 2 * GUARD, 99)) {
    std::fill(all_.begin() + GUARD, all_.end() - GUARD, FILL);
}

bool Guarded::guardsIntact() const {
    const Bytes expected = noise(all_.size(), 99);
    return std::equal(expected.begin(), expected.begin() + GUARD, all_.begin()) &&
           std::equal(expected.end() - GUARD, expected.end(), all_.end() - GUARD);
}

bool Guarded::untouched() const {
    return guardsIntact() && std::count(all_.begin() + GUARD, all_.end() - GUARD, FILL) ==
                                 static_cast<ptrdiff_t>(all_.size()) - 2 * GUARD;
}

// The matrix of BT.601: Kr = 0.299, Kb = 0.114; luma spans 219 steps above 16, chroma 224 around 128.
Yuv bt601(Rgb colour) {
    const double r = colour.r / 255.0;
    const double g = colour.g / 255.0;
    const double b = colour.b / 255.0;
    const double luma = 0.299 * r + 0.587 * g + 0.114 * b;
    return {16 + 219 * luma, 128 + 224 * (b - luma) / (2 * (1 - 0.114)),
            128 + 224 * (r - luma) / (2 * (1 - 0.299))};
}

std::array<double, 3> bt601Inverse(int y, int u, int v) {
    const double luma = (y - 16) / 219.0;
    const double r = luma + 2 * (1 - 0.299) * (v - 128) / 224.0;
    const double b = luma + 2 * (1 - 0.114) * (u - 128) / 224.0;
    const double g = (luma - 0.299 * r - 0.114 * b) / 0.587;
    std::array<double, 3> rgb = {r, g, b};
    for (double& component : rgb)
        component = std::min(255.0, std::max(0.0, component * 255));
    return rgb;
}

const Rgb WHITE = {255, 255, 255};
const Rgb BLACK = {0, 0, 0};
const Rgb RED = {255, 0, 0};
const Rgb GREEN = {0, 255, 0};
const Rgb BLUE = {0, 0, 255};
const Rgb YELLOW = {255, 255, 0};
const Rgb CYAN = {0, 255, 255};
const Rgb MAGENTA = {255, 0, 255};

std::vector<Rgb> testColours() {
    std::vector<Rgb> colours = {WHITE, BLACK, RED, GREEN, BLUE, YELLOW, CYAN, MAGENTA};
    for (int grey = 0; grey < 256; grey += 17)
        colours.push_back({grey, grey, grey});
    return colours;
}

const std::array<Rgb, 4>& quadrantColours() {
    static const std::array<Rgb, 4> colours = {RED, GREEN, BLUE, YELLOW};
    return colours;
}

Rgb quadrants(Size size, int x, int y) {
    const size_t index = (x < size.width / 2 ? 0u : 1u) + (y < size.height / 2 ? 0u : 2u);
    return quadrantColours()[index];
}

Rgb redTopRow(Size, int, int y) {
    return y == 0 ? RED : BLUE;
}

Bytes drawArgb(Picture picture, Size size, uint8_t alpha) {
    Bytes frame;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const Rgb colour = picture(size, x, y);
            for (int component : {colour.b, colour.g, colour.r, static_cast<int>(alpha)})
                frame.push_back(static_cast<uint8_t>(component));
        }
    return frame;
}

Bytes drawRgb24(Picture picture, Size size) {
    Bytes frame;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const Rgb colour = picture(size, x, y);
            for (int component : {colour.b, colour.g, colour.r})
                frame.push_back(static_cast<uint8_t>(component));
        }
    return frame;
}

namespace {

uint8_t rounded(double value) {
    return static_cast<uint8_t>(lround(value));
}

} // namespace

Bytes drawYuy2(Picture picture, Size size) {
    Bytes frame;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; x += 2) {
            const Yuv left = bt601(picture(size, x, y));
            const Yuv right = bt601(picture(size, x + 1, y));
            for (double component : {left.y, left.u, right.y, left.v})
                frame.push_back(rounded(component));
        }
    return frame;
}

Bytes drawI420(Picture picture, Size size) {
    Bytes luma, u, v;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const Yuv colour = bt601(picture(size, x, y));
            luma.push_back(rounded(colour.y));
            if (x % 2 != 0 || y % 2 != 0)
                continue;
            u.push_back(rounded(colour.u));
            v.push_back(rounded(colour.v));
        }
    luma.insert(luma.end(), u.begin(), u.end());
    luma.insert(luma.end(), v.begin(), v.end());
    return luma;
}

namespace {

int at(const Bytes& frame, int index) {
    return frame.at(static_cast<size_t>(index));
}

bool near(double actual, double expected, double tolerance) {
    return fabs(actual - expected) <= tolerance;
}

} // namespace

Pixel i420Pixel(const Bytes& frame, Size size, int x, int y) {
    const int luma = size.width * size.height;
    const int chroma = (y / 2) * (size.width / 2) + x / 2;
    return {at(frame, y * size.width + x), at(frame, luma + chroma), at(frame, luma + luma / 4 + chroma)};
}

Pixel yuy2Pixel(const Bytes& frame, Size size, int x, int y) {
    const int pair = (y * size.width + x - x % 2) * 2;
    return {at(frame, pair + x % 2 * 2), at(frame, pair + 1), at(frame, pair + 3)};
}

Rgb argbPixel(const Bytes& frame, Size size, int x, int y) {
    const int pixel = (y * size.width + x) * 4;
    return {at(frame, pixel + 2), at(frame, pixel + 1), at(frame, pixel)};
}

std::string difference(Pixel actual, Rgb expected, double tolerance) {
    const Yuv wanted = bt601(expected);
    if (near(actual.y, wanted.y, tolerance) && near(actual.u, wanted.u, tolerance) &&
        near(actual.v, wanted.v, tolerance))
        return std::string();
    std::ostringstream text;
    text << "Y, U, V " << actual.y << ", " << actual.u << ", " << actual.v << " instead of " << wanted.y
         << ", " << wanted.u << ", " << wanted.v;
    return text.str();
}

std::string difference(Rgb actual, Rgb expected, double tolerance) {
    if (near(actual.r, expected.r, tolerance) && near(actual.g, expected.g, tolerance) &&
        near(actual.b, expected.b, tolerance))
        return std::string();
    std::ostringstream text;
    text << "R, G, B " << actual.r << ", " << actual.g << ", " << actual.b << " instead of " << expected.r
         << ", " << expected.g << ", " << expected.b;
    return text.str();
}

} // namespace ostrel::tests
