#include "platform/cameras/virtual/pattern_painter.h"

#include "platform/cameras/pixels/scaling.h"
#include "platform/cameras/virtual/canvas.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace ostrel {
namespace cameras {

namespace {

// The layout, from the top, in bands of a thirtieth of the height:
//    0 -  2  the code
//    2 - 14  colour bars; in their middle a plate with an arrow and the word TOP, from 3 to 10
//   14 - 16  the code
//   16 - 28  the lane of the moving mark, the counter, the clock
//   28 - 30  the code
const int BARS_TOP = 2;
const int BARS_BOTTOM = 14;
const int PLATE_TOP = 3;
const int PLATE_BOTTOM = 10;
const int LANE_TOP = 17;
const int LANE_BOTTOM = 19;
const int COUNTER_TOP = 20;
const int CLOCK_TOP = 24;
const int TEXT_BANDS = 4; // the height that a line of text has to itself

const Colour BARS[] = {{255, 255, 255}, {255, 255, 0}, {0, 255, 255}, {0, 255, 0},
                       {255, 0, 255},   {255, 0, 0},   {0, 0, 255},   {0, 0, 0}};
const int BAR_COUNT = sizeof(BARS) / sizeof(BARS[0]);
const Colour PLATE = {40, 40, 40};
const Colour LOWER = {32, 32, 64};
const Colour LANE = {80, 80, 96};
const Colour MARK = {255, 160, 0};

const uint32_t MARK_STEPS = 120; // frames from one side to the other
const char COUNTER_LABEL[] = "FRAME";
const char CLOCK_LABEL[] = "CLOCK";
const int LABEL_CHARACTERS = 6; // with the blank behind it
const int TEXT_CHARACTERS = 16; // a label and ten digits

int bandTop(int band, int height) {
    return band * height / pattern::BANDS;
}

int columnLeft(int column, int columns, int width) {
    return static_cast<int>(static_cast<int64_t>(column) * width / columns);
}

// Where the two lines of text stand, for a picture of the given size.
struct TextPlace {
    TextPlace(int width, int height)
        : scale(std::max(1, std::min(bandTop(TEXT_BANDS, height) * 7 / 8 / Canvas::GLYPH_HEIGHT,
                                     width * 19 / 20 / (TEXT_CHARACTERS * Canvas::ADVANCE)))),
          left((width - TEXT_CHARACTERS * Canvas::ADVANCE * scale) / 2) {}

    int scale;
    int left;
};

void drawTopSign(Canvas& canvas) {
    const int width = canvas.width();
    const int top = bandTop(PLATE_TOP, canvas.height());
    const int bottom = bandTop(PLATE_BOTTOM, canvas.height());
    const int size = bottom - top;
    const int centre = width / 2;
    canvas.fill(centre - width / 8, top, centre + width / 8, bottom, PLATE);

    // The arrow's head in the upper half: each row a little wider than the one above.
    const int headTop = top + size / 10;
    const int headRows = size * 3 / 10;
    for (int y = 0; y < headRows; ++y)
        canvas.fill(centre - y, headTop + y, centre + y + 1, headTop + y + 1, WHITE);
    const int shaft = std::max(1, headRows / 4);
    canvas.fill(centre - shaft, headTop + headRows, centre + shaft + 1, top + size / 2, WHITE);

    const int scale = std::max(1, std::min(size * 2 / 5 / Canvas::GLYPH_HEIGHT, width / 4 / 20));
    canvas.text(centre - (3 * Canvas::ADVANCE - 1) * scale / 2, top + size * 11 / 20, scale, "TOP", WHITE);
}

void drawBackground(Canvas& canvas) {
    const int width = canvas.width();
    const int height = canvas.height();
    canvas.fill(0, 0, width, height, LOWER);
    for (int bar = 0; bar < BAR_COUNT; ++bar)
        canvas.fill(columnLeft(bar, BAR_COUNT, width), bandTop(BARS_TOP, height),
                    columnLeft(bar + 1, BAR_COUNT, width), bandTop(BARS_BOTTOM, height), BARS[bar]);
    drawTopSign(canvas);
    canvas.fill(0, bandTop(LANE_TOP, height), width, bandTop(LANE_BOTTOM, height), LANE);
    const TextPlace place(width, height);
    canvas.text(place.left, bandTop(COUNTER_TOP, height), place.scale, COUNTER_LABEL, WHITE);
    canvas.text(place.left, bandTop(CLOCK_TOP, height), place.scale, CLOCK_LABEL, WHITE);
}

void drawCode(Canvas& canvas, const pattern::Stamp& stamp) {
    const int width = canvas.width();
    const int height = canvas.height();
    for (int line = 0; line < pattern::CODE_LINES; ++line) {
        const uint64_t cells = pattern::codeLine(stamp, line);
        for (const int first : pattern::CODE_BANDS) {
            const int top = bandTop(first + line, height);
            const int bottom = bandTop(first + line + 1, height);
            if (top >= bottom)
                continue;
            // One row of cells, then copies of it.
            for (int cell = 0; cell < pattern::CODE_CELLS; ++cell)
                canvas.fill(columnLeft(cell, pattern::CODE_CELLS, width), top,
                            columnLeft(cell + 1, pattern::CODE_CELLS, width), top + 1,
                            cells >> (pattern::CODE_CELLS - 1 - cell) & 1 ? WHITE : BLACK);
            for (int y = top + 1; y < bottom; ++y)
                std::memcpy(canvas.row(y), canvas.row(top), static_cast<size_t>(width) * 4);
        }
    }
}

void drawMark(Canvas& canvas, uint32_t step) {
    const int width = canvas.width();
    const int size = std::max(2, width / 20);
    const int left = columnLeft(static_cast<int>(step % MARK_STEPS), MARK_STEPS - 1, width - size);
    canvas.fill(left, bandTop(LANE_TOP, canvas.height()), left + size, bandTop(LANE_BOTTOM, canvas.height()),
                MARK);
}

void drawNumber(Canvas& canvas, int topBand, uint32_t number) {
    char digits[16];
    std::snprintf(digits, sizeof(digits), "%10u", static_cast<unsigned>(number));
    const TextPlace place(canvas.width(), canvas.height());
    canvas.text(place.left + LABEL_CHARACTERS * Canvas::ADVANCE * place.scale,
                bandTop(topBand, canvas.height()), place.scale, digits, WHITE);
}

void brighten(Canvas& canvas, int by) {
    uint8_t brighter[256];
    for (int level = 0; level < 256; ++level)
        brighter[level] = static_cast<uint8_t>(std::max(0, std::min(level + by, 255)));
    for (int y = 0; y < canvas.height(); ++y) {
        uint8_t* const row = canvas.row(y);
        for (int i = 0; i < canvas.width() * 4; i += 4)
            for (int colour = 0; colour < 3; ++colour)
                row[i + colour] = brighter[row[i + colour]];
    }
}

} // namespace

const uint8_t* PatternPainter::background() {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!background_) {
        pixels::PixelPool::Block fresh =
            pool_.take(static_cast<size_t>(width_) * 4 * static_cast<size_t>(height_));
        Canvas canvas(fresh.data(), width_, height_, width_ * 4);
        drawBackground(canvas);
        background_ = std::move(fresh);
    }
    return background_.data();
}

void PatternPainter::draw(const uint8_t* background, const PatternScene& scene, Canvas& canvas) const {
    const size_t rowBytes = static_cast<size_t>(width_) * 4;
    for (int y = 0; y < height_; ++y)
        std::memcpy(canvas.row(y), background + static_cast<size_t>(y) * rowBytes, rowBytes);
    drawMark(canvas, scene.stamp.counter + scene.markAhead);
    drawNumber(canvas, COUNTER_TOP, scene.stamp.counter);
    drawNumber(canvas, CLOCK_TOP, scene.stamp.clock);
    if (scene.brighter != 0)
        brighten(canvas, scene.brighter);
    drawCode(canvas, scene.stamp); // which stays readable
}

bool PatternPainter::paint(const PatternScene& scene, uint8_t* bgra, int width, int height, int stride) {
    if (!pixels::sizeIsSane(width, height))
        return false;
    if (width == width_ && height == height_) {
        Canvas canvas(bgra, width, height, stride);
        draw(background(), scene, canvas);
        return true;
    }
    return show(scene, [&](const pixels::Picture& native) {
        pixels::scaleBgra({native.planes[0].data, width_, height_, native.planes[0].stride},
                          {pixels::OutputFormat::Bgra, bgra, width, height, stride}, pool_);
    });
}

bool PatternPainter::show(const PatternScene& scene,
                          const std::function<void(const pixels::Picture&)>& reader) {
    const uint8_t* const still = background();
    const int stride = width_ * 4;
    const size_t bytes = static_cast<size_t>(stride) * static_cast<size_t>(height_);
    const pixels::PixelPool::Block native = pool_.take(bytes);
    Canvas canvas(native.data(), width_, height_, stride);
    draw(still, scene, canvas);
    pixels::Picture picture;
    picture.layout = pixels::Layout::Bgrx;
    picture.width = width_;
    picture.height = height_;
    pixels::setBlock(picture, native.data(), bytes, stride);
    reader(picture);
    return true;
}

} // namespace cameras
} // namespace ostrel
