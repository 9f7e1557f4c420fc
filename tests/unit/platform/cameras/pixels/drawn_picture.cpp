#include "unit/platform/cameras/pixels/drawn_picture.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace ostrel::tests {

using namespace cameras::pixels;

const std::vector<Layout> RAW_LAYOUTS = {
    Layout::Yuyv,   Layout::Uyvy,    Layout::Yvyu,     Layout::Vyuy, Layout::Nv12,   Layout::Nv21,
    Layout::Nv16,   Layout::Nv24,    Layout::P010,     Layout::I420, Layout::Yv12,   Layout::I422,
    Layout::I444,   Layout::Luma,    Layout::Rgb,      Layout::Bgr,  Layout::Bgrx,   Layout::Xrgb,
    Layout::Rgbx,   Layout::Rgb565,  Layout::Rgb565Be, Layout::Grey, Layout::Grey10, Layout::Grey12,
    Layout::Grey16, Layout::Grey16Be};

namespace {

struct Yuv {
    int y, u, v;
};
struct Weights {
    double red, blue;
};

// The two by which each standard defines its luma.
Weights weightsOf(YuvMatrix matrix) {
    switch (matrix) {
    case YuvMatrix::Bt709:
    case YuvMatrix::Bt709Full:
        return {0.2126, 0.0722};
    case YuvMatrix::Bt2020:
    case YuvMatrix::Bt2020Full:
        return {0.2627, 0.0593};
    default:
        return {0.299, 0.114};
    }
}

int byte(double value) {
    return static_cast<int>(std::lround(std::min(255.0, std::max(0.0, value))));
}

Yuv yuvOf(const Colour& c, YuvMatrix matrix) {
    const Weights k = weightsOf(matrix);
    const bool full =
        matrix == YuvMatrix::Bt601Full || matrix == YuvMatrix::Bt709Full || matrix == YuvMatrix::Bt2020Full;
    const double y = lumaOf(c, matrix);
    const double u = (c.b - y) / (2 * (1 - k.blue)), v = (c.r - y) / (2 * (1 - k.red));
    const double lumaScale = full ? 1 : 219.0 / 255, chromaScale = full ? 1 : 224.0 / 255;
    return {byte((full ? 0 : 16) + y * lumaScale), byte(128 + u * chromaScale), byte(128 + v * chromaScale)};
}

// How often fewer samples of chroma there are, and how they lie in one block, by the layouts' definitions.
struct ChromaPlanes {
    int columns, rows;                         // divisors
    int planes;                                // 2: one of pairs; 3: one each
    size_t strideNumerator, strideDenominator; // of the first plane's stride
};

ChromaPlanes chromaOfLayout(Layout layout) {
    switch (layout) {
    case Layout::Nv12:
    case Layout::Nv21:
    case Layout::P010:
        return {2, 2, 2, 1, 1};
    case Layout::Nv16:
        return {2, 1, 2, 1, 1};
    case Layout::Nv24:
        return {1, 1, 2, 2, 1};
    case Layout::I420:
    case Layout::Yv12:
        return {2, 2, 3, 1, 2};
    case Layout::I422:
        return {2, 1, 3, 1, 2};
    case Layout::I444:
        return {1, 1, 3, 1, 1};
    default:
        return {1, 1, 1, 0, 1};
    }
}

} // namespace

bool isYuv(Layout layout) {
    return layout <= Layout::I444;
}

double lumaOf(const Colour& c, YuvMatrix matrix) {
    const Weights k = weightsOf(matrix);
    return k.red * c.r + (1 - k.red - k.blue) * c.g + k.blue * c.b;
}

Colour quadrantAt(int x, int y, int width, int height) {
    static const std::array<Colour, 4> quadrants = {
        {{200, 30, 40}, {20, 180, 60}, {30, 50, 210}, {190, 190, 190}}};
    return quadrants[static_cast<size_t>((y >= height / 2 ? 2 : 0) + (x >= width / 2 ? 1 : 0))];
}

DrawnPicture::DrawnPicture(Layout layout, int width, int height, const Storage& storage)
    : DrawnPicture(
          layout, width, height, [=](int x, int y) { return quadrantAt(x, y, width, height); }, storage) {}

DrawnPicture::DrawnPicture(Layout layout, int width, int height, const Draw& draw, const Storage& storage) {
    picture.layout = layout;
    picture.matrix = storage.matrix;
    picture.fields = storage.fields;
    picture.width = width;
    picture.height = height;
    const ChromaPlanes chroma = chromaOfLayout(layout);
    const int stride = minimumStride(layout, width) + storage.padding;
    size_t begin = 0;
    for (int i = 0; i < chroma.planes; ++i) {
        auto& plane = planes_[i];
        plane.stride = static_cast<size_t>(stride);
        if (i > 0)
            plane.stride = plane.stride * chroma.strideNumerator / chroma.strideDenominator;
        if (storage.blocks)
            plane.stride += static_cast<size_t>(2 * i); // each its own
        plane.rows = i > 0 ? (height + chroma.rows - 1) / chroma.rows : height;
        plane.which = storage.blocks ? i : 0;
        plane.begin = storage.blocks ? 0 : begin;
        begin += plane.stride * static_cast<size_t>(plane.rows);
        if (storage.blocks)
            bytes_[i].assign(plane.stride * static_cast<size_t>(plane.rows), 0xEE);
    }
    if (!storage.blocks) {
        bytes_[0].assign(neededBytes(layout, width, height, stride), 0xEE);
        setBlock(picture, bytes_[0].data(), bytes_[0].size(), stride);
    } else {
        for (size_t i = 0; i < static_cast<size_t>(chroma.planes); ++i)
            picture.planes[i] = {bytes_[i].data(), bytes_[i].size(), static_cast<int>(planes_[i].stride)};
    }
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            put(x, y, draw(x, y));
}

int DrawnPicture::rowInMemory(int row, int rows) const {
    switch (picture.fields) {
    case Fields::TopFirst:
        return row % 2 == 0 ? row / 2 : (rows + 1) / 2 + row / 2;
    case Fields::BottomFirst:
        return row % 2 == 1 ? row / 2 : rows / 2 + row / 2;
    default:
        return row;
    }
}

void DrawnPicture::set(size_t plane, int row, size_t at, int value) {
    const auto& p = planes_[plane];
    const auto y = static_cast<size_t>(rowInMemory(row, p.rows));
    bytes_[p.which].at(p.begin + y * p.stride + at) = static_cast<uint8_t>(value);
}

void DrawnPicture::put(int x, int y, const Colour& c) {
    const Yuv yuv = yuvOf(c, picture.matrix);
    const ChromaPlanes chroma = chromaOfLayout(picture.layout);
    const auto column = static_cast<size_t>(x);
    const size_t pair = column / 2 * 4, second = column % 2;
    const auto part = static_cast<size_t>(x / chroma.columns);
    // Fields are pictures of their own: their rows of chroma belong to their rows alone.
    const bool woven = picture.fields == Fields::Woven;
    const int row = std::min(woven ? y / chroma.rows : y / 2 / chroma.rows * 2 + y % 2, planes_[1].rows - 1);
    const auto bytes = [&](std::initializer_list<int> values) {
        size_t at = column * values.size();
        for (const int value : values)
            set(0, y, at++, value);
    };
    switch (picture.layout) {
    case Layout::Yuyv:
        set(0, y, pair + 2 * second, yuv.y), set(0, y, pair + 1, yuv.u), set(0, y, pair + 3, yuv.v);
        break;
    case Layout::Uyvy:
        set(0, y, pair + 2 * second + 1, yuv.y), set(0, y, pair, yuv.u), set(0, y, pair + 2, yuv.v);
        break;
    case Layout::Yvyu:
        set(0, y, pair + 2 * second, yuv.y), set(0, y, pair + 3, yuv.u), set(0, y, pair + 1, yuv.v);
        break;
    case Layout::Vyuy:
        set(0, y, pair + 2 * second + 1, yuv.y), set(0, y, pair + 2, yuv.u), set(0, y, pair, yuv.v);
        break;
    case Layout::Nv12:
    case Layout::Nv16:
    case Layout::Nv24:
        set(0, y, column, yuv.y), set(1, row, 2 * part, yuv.u), set(1, row, 2 * part + 1, yuv.v);
        break;
    case Layout::Nv21:
        set(0, y, column, yuv.y), set(1, row, 2 * part, yuv.v), set(1, row, 2 * part + 1, yuv.u);
        break;
    case Layout::P010: // ten bits on top; the two that eight bits lack are ones here
        set(0, y, 2 * column, 0xC0), set(0, y, 2 * column + 1, yuv.y);
        set(1, row, 4 * part, 0xC0), set(1, row, 4 * part + 1, yuv.u);
        set(1, row, 4 * part + 2, 0xC0), set(1, row, 4 * part + 3, yuv.v);
        break;
    case Layout::I420:
    case Layout::I422:
    case Layout::I444:
        set(0, y, column, yuv.y), set(1, row, part, yuv.u), set(2, row, part, yuv.v);
        break;
    case Layout::Yv12:
        set(0, y, column, yuv.y), set(1, row, part, yuv.v), set(2, row, part, yuv.u);
        break;
    case Layout::Luma:
        bytes({yuv.y});
        break;
    case Layout::Rgb:
        bytes({c.r, c.g, c.b});
        break;
    case Layout::Bgr:
        bytes({c.b, c.g, c.r});
        break;
    case Layout::Bgrx:
        bytes({c.b, c.g, c.r, 0});
        break;
    case Layout::Xrgb:
        bytes({0, c.r, c.g, c.b});
        break;
    case Layout::Rgbx:
        bytes({c.r, c.g, c.b, 0});
        break;
    case Layout::Rgb565:
    case Layout::Rgb565Be: {
        const int value = (c.r >> 3) << 11 | (c.g >> 2) << 5 | c.b >> 3;
        if (picture.layout == Layout::Rgb565)
            bytes({value & 0xFF, value >> 8});
        else
            bytes({value >> 8, value & 0xFF});
        break;
    }
    case Layout::Grey:
        bytes({c.g});
        break;
    case Layout::Grey10: // the bits that eight lack are ones
        bytes({(c.g << 2 | 3) & 0xFF, c.g >> 6});
        break;
    case Layout::Grey12:
        bytes({(c.g << 4 | 15) & 0xFF, c.g >> 4});
        break;
    case Layout::Grey16:
        bytes({0xFF, c.g});
        break;
    case Layout::Grey16Be:
        bytes({c.g, 0xFF});
        break;
    case Layout::Jpeg:
    case Layout::Opaque:
        break;
    }
}

} // namespace ostrel::tests
